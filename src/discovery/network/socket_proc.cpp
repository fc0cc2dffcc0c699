#include "discovery/network/socket_proc.h"

#include <algorithm>
#include <random>

namespace tavira {
namespace {

constexpr std::uint32_t kDatagramTimeoutSeconds = 3;
constexpr std::uint32_t kStreamTimeoutSeconds = 18;
constexpr std::uint32_t kReceivePollMs = 10;

struct tagProtocol {
  std::uint32_t selector;
  std::int32_t type;
  std::uint16_t port;
};

constexpr tagProtocol kProtocols[] = {
    {kSelectorHttp, kStreamSocket, 80},      {kSelectorSearch, kDatagramSocket, 3289},
    {kSelectorStatus, kDatagramSocket, 161}, {kSelectorTransfer, kDatagramSocket, 69},
    {kSelectorFile, kDatagramSocket, 21},
};

/** The first number drawn is taken as it is, even when it is a system port. */
std::uint16_t DrawLocalPort(IClock& clock) {
  std::tm now = clock.LocalTime();
  std::mt19937 generator(static_cast<std::mt19937::result_type>(std::mktime(&now)));
  return static_cast<std::uint16_t>(std::uniform_int_distribution<int>(0, 0x7FFF)(generator));
}

}  // namespace

CSocketProc::CSocketProc(const tagNetPlatform& platform)
    : platform_(platform), lock_(std::make_unique<CMutex>()), socket_(platform.sockets) {}

CSocketProc::~CSocketProc() {
  CSocketProc::Close(0);
}

std::uint32_t CSocketProc::Open(const tagNetAddress* address, std::uint32_t selector) {
  if (!lock_) {
    return kNetFailed;
  }
  const std::lock_guard guard(*lock_);
  error_ = {};
  socket_.Reset();
  if (address == nullptr) {
    return kNetFailed;
  }
  remote_ = {Resolve(*address), 0};
  ChooseProtocol(selector);
  const std::uint32_t result = OpenProtocol(selector);
  DestroyConnectors();
  if (result != kNetDone) {
    socket_.Reset();
  }
  return result;
}

std::uint32_t CSocketProc::Close(std::uint32_t flag) {
  OnClose(flag);
  const auto guard = lock_ ? std::unique_lock(*lock_) : std::unique_lock<CMutex>();
  socket_.Reset();
  DestroyConnectors();
  return kNetDone;
}

void CSocketProc::DestroyConnectors() {
  for (auto& connector : connectors_) {
    connector.reset();
  }
}

std::uint32_t CSocketProc::Resolve(const tagNetAddress& address) {
  const TvmgrChar* end = std::find(std::begin(address.host), std::end(address.host), TvmgrChar{});
  const std::string host =
      platform_.text.ToAnsi(WideView(address.host, static_cast<std::size_t>(end - address.host)));
  return platform_.sockets.Resolve(host).value_or(0);
}

void CSocketProc::ChooseProtocol(std::uint32_t selector) {
  // Any other selector is taken for a type of socket: the system refuses what is none.
  type_ = static_cast<std::int32_t>(selector);
  for (const tagProtocol& protocol : kProtocols) {
    if (protocol.selector == selector) {
      type_ = protocol.type;
      remote_.port = protocol.port;
    }
  }
}

std::uint32_t CSocketProc::OpenProtocol(std::uint32_t selector) {
  return selector == kSelectorHttp ? OpenStream() : OpenDatagram(selector);
}

std::uint32_t CSocketProc::OpenDatagram(std::uint32_t selector) {
  socket_.Reset(platform_.sockets.Create(type_));
  if (!HasSocket()) {
    return Fail("socket():");
  }
  if (selector == kSelectorTransfer &&
      !platform_.sockets.Bind(socket_.Get(), {0, DrawLocalPort(platform_.clock)})) {
    return kNetFailed;
  }
  return SetTimeouts(kDatagramTimeoutSeconds);
}

std::uint32_t CSocketProc::OpenStream() {
  const std::uint32_t result = use_connect_thread_ != 0 ? ConnectByThreads() : ConnectDirectly();
  return result == kNetDone ? SetTimeouts(kStreamTimeoutSeconds) : result;
}

std::uint32_t CSocketProc::ConnectDirectly() {
  constexpr int kAttempts = 4;
  constexpr std::uint32_t kPauseMs = 500;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    socket_.Reset(platform_.sockets.Create(type_));
    if (!HasSocket()) {
      return Fail("socket():");
    }
    if (!platform_.sockets.Bind(socket_.Get(), {})) {
      return Fail("bind():");
    }
    const bool connected = platform_.sockets.Connect(socket_.Get(), remote_);
    if (!connected) {
      Fail("connect():");
    }
    platform_.clock.Sleep(kPauseMs);
    if (connected) {
      return kNetDone;
    }
    socket_.Reset();
    platform_.clock.Sleep(kPauseMs);
  }
  return kNetFailed;
}

std::uint32_t CSocketProc::ConnectByThreads() {
  for (auto& slot : connectors_) {
    slot = std::make_unique<CConnect>(platform_, type_, remote_, error_);
    bool go_on = false;
    if (TryConnector(*slot, go_on)) {
      return kNetDone;
    }
    if (!go_on) {
      return kNetFailed;
    }
  }
  std::uint32_t code = kSocketErrorTimedOut;
  connectors_.back()->HasFailed(code);
  error_ = {code, "connect():"};
  return kNetFailed;
}

bool CSocketProc::TryConnector(CConnect& connector, bool& go_on) {
  constexpr std::uint32_t kWaitMs = 3000;
  constexpr std::uint32_t kPollMs = 100;
  go_on = connector.StartConnectThread() && connector.PrepareSocket();
  if (!go_on) {
    return false;
  }
  connector.RequestConnect();
  // A connect that fails early still takes its whole time: the printer gets it to come up.
  for (std::uint32_t poll = 0; poll < kWaitMs / kPollMs; ++poll) {
    platform_.clock.Sleep(kPollMs);
    if (connector.IsConnected()) {
      socket_.Reset(connector.TakeSocket());
      return true;
    }
  }
  std::uint32_t code = 0;
  if (!connector.HasFailed(code)) {
    connector.Cancel();
  }
  return false;
}

std::uint32_t CSocketProc::SetTimeouts(std::uint32_t seconds) {
  const std::uint32_t result = SetSendTimeout(seconds);
  return result == kNetDone ? SetReceiveTimeout(seconds) : result;
}

std::uint32_t CSocketProc::SetSendTimeout(std::uint32_t seconds) {
  if (!HasSocket()) {
    return kNetFailed;
  }
  return platform_.sockets.SetOption(socket_.Get(), ESocketOption::kSendTimeout, seconds * 1000)
             ? kNetDone
             : Fail("setsockopt():");
}

std::uint32_t CSocketProc::SetReceiveTimeout(std::uint32_t seconds) {
  receive_wait_ms_ = seconds * 1000;
  if (!HasSocket()) {
    return kNetFailed;
  }
  return platform_.sockets.SetOption(socket_.Get(), ESocketOption::kReceiveTimeout, receive_wait_ms_)
             ? kNetDone
             : Fail("setsockopt():");
}

void CSocketProc::GetLastErrorText(TvmgrChar* buffer) {
  if (buffer == nullptr) {
    return;
  }
  const WideString text = WidenAscii(error_.text);
  buffer[text.copy(buffer, kErrorTextCapacity - 1)] = TvmgrChar{};
}

std::uint32_t CSocketProc::Receive(void* buffer, std::uint32_t size, std::uint32_t* count) {
  if (!HasSocket()) {
    return kNetFailed;
  }
  const bool is_stream = type_ == kStreamSocket;
  const std::int32_t received = is_stream
                                    ? platform_.sockets.Receive(socket_.Get(), buffer, size)
                                    : platform_.sockets.ReceiveFrom(socket_.Get(), buffer, size, sender_);
  if (received < 0) {
    Fail("recv():");
    return error_.code == kSocketErrorTimedOut ? kNetNothingReceived : kNetFailed;
  }
  if (count != nullptr) {
    *count = static_cast<std::uint32_t>(received);
  }
  if (!is_stream) {  // a stream's sender is the peer already
    SetRemotePort(SwapPort(sender_.port));
  }
  return kNetDone;
}

std::uint32_t CSocketProc::ReceiveWait(void* buffer, std::uint32_t size, std::uint32_t* count,
                                       std::uint32_t wait) {
  if (!HasSocket()) {
    return kNetFailed;
  }
  const std::uint32_t result = WaitUntilReadable(wait != 0);
  return result == kNetDone ? Receive(buffer, size, count) : result;
}

std::uint32_t CSocketProc::WaitUntilReadable(bool wait) {
  std::int32_t readable = platform_.sockets.PollReadable(socket_.Get(), 0);
  platform_.clock.Sleep(0);
  std::uint32_t waited = 0;
  std::uint32_t last_reading = platform_.clock.TickCount();
  while (readable == 0 && wait && waited < receive_wait_ms_) {
    platform_.clock.Sleep(kReceivePollMs);
    readable = platform_.sockets.PollReadable(socket_.Get(), 0);
    const std::uint32_t now = platform_.clock.TickCount();
    waited += now - last_reading;
    last_reading = now;
  }
  if (readable < 0) {
    return kNetFailed;
  }
  return readable != 0 ? kNetDone : kNetNothingReceived;
}

std::uint32_t CSocketProc::Send(const void* bytes, std::uint32_t size, std::uint32_t* count) {
  if (!HasSocket()) {
    return kNetFailed;
  }
  std::int32_t sent = 0;
  if (size != 0) {
    sent = type_ == kStreamSocket ? platform_.sockets.Send(socket_.Get(), bytes, size)
                                  : platform_.sockets.SendTo(socket_.Get(), bytes, size, remote_);
  }
  if (sent < 0) {
    return Fail("send():");
  }
  if (count != nullptr) {
    *count = static_cast<std::uint32_t>(sent);
  }
  return kNetDone;
}

std::uint32_t CSocketProc::Control(std::uint32_t command, std::uint32_t* argument) {
  const bool done =
      HasSocket() && argument != nullptr && platform_.sockets.Control(socket_.Get(), command, *argument);
  return done ? kNetDone : kNetFailed;
}

void CSocketProc::SetRemotePort(std::uint16_t port) {
  remote_.port = SwapPort(port);
}

std::uint16_t CSocketProc::GetRemotePort() {
  return SwapPort(remote_.port);
}

std::uint32_t CSocketProc::Fail(const char* text) {
  error_ = {platform_.sockets.LastError(), text};
  return kNetFailed;
}

}  // namespace tavira
