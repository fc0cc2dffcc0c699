#include "emulator/network/socket.h"

#ifdef _WIN32
#include "emulator/network/socket_system_win32.h"
#else
#include "emulator/network/socket_system_posix.h"
#endif

#include <algorithm>
#include <charconv>
#include <memory>
#include <vector>

namespace lxemu {
namespace {

namespace sys = socket_system;

constexpr int kBacklog = 16;

sys::Handle Native(std::intptr_t handle) {
  return static_cast<sys::Handle>(handle);
}

sockaddr_in NativeAddress(const tagSocketAddress& address) {
  sockaddr_in native{};
  native.sin_family = AF_INET;
  native.sin_port = htons(address.port);
  native.sin_addr.s_addr = htonl(address.ip);
  return native;
}

tagSocketAddress FromNative(const sockaddr_in& native) {
  return {ntohl(native.sin_addr.s_addr), ntohs(native.sin_port)};
}

void SetOption(std::intptr_t handle, int level, int option, int value) {
  setsockopt(Native(handle), level, option, reinterpret_cast<const char*>(&value), sizeof value);
}

std::string Describe(const char* call) {
  return std::string(call) + " failed with error " + std::to_string(sys::LastError());
}

// Sizes of one call stay within what an int holds everywhere.
sys::Size OneCall(std::size_t size) {
  return static_cast<sys::Size>(std::min<std::size_t>(size, std::size_t{1} << 30));
}

tagTransfer Moved(std::intptr_t count) {
  if (count >= 0) {
    return {SocketResult::kDone, static_cast<std::size_t>(count)};
  }
  return {sys::IsWouldBlock(sys::LastError()) ? SocketResult::kWouldBlock : SocketResult::kFailed, 0};
}

}  // namespace

std::optional<std::uint32_t> ParseIpv4(std::string_view text) {
  std::uint32_t ip = 0;
  for (int part = 0; part < 4; ++part) {
    std::uint8_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{}) {
      return std::nullopt;
    }
    ip = ip << 8 | number;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (part < 3) {
      if (!text.starts_with('.')) {
        return std::nullopt;
      }
      text.remove_prefix(1);
    }
  }
  return text.empty() ? std::optional(ip) : std::nullopt;
}

std::string Ipv4Text(std::uint32_t ip) {
  std::string text;
  for (const int shift : {24, 16, 8, 0}) {
    text += (text.empty() ? "" : ".") + std::to_string(ip >> shift & 255);
  }
  return text;
}

std::string AddressText(const tagSocketAddress& address) {
  return Ipv4Text(address.ip) + ":" + std::to_string(address.port);
}

std::optional<std::uint32_t> ResolveHost(const std::string& host) {
  if (const std::optional<std::uint32_t> ip = ParseIpv4(host)) {
    return ip;
  }
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (!StartSockets() || getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0 || found == nullptr) {
    return std::nullopt;
  }
  const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owner(found,
                                                             [](addrinfo* list) { freeaddrinfo(list); });
  return FromNative(*reinterpret_cast<const sockaddr_in*>(found->ai_addr)).ip;
}

bool StartSockets() {
  static const bool is_started = sys::Start();
  return is_started;
}

CSocket& CSocket::operator=(CSocket&& other) noexcept {
  std::swap(handle_, other.handle_);
  other.Close();
  return *this;
}

void CSocket::Close() {
  if (IsOpen()) {
    sys::Close(Native(std::exchange(handle_, kNone)));
  }
}

CSocket CSocket::Make(int type, std::string& problem) {
  CSocket made;
  if (!StartSockets()) {
    problem = "sockets cannot be used";
    return made;
  }
  made.handle_ = static_cast<std::intptr_t>(socket(AF_INET, type, 0));
  if (!made.IsOpen()) {
    problem = Describe("socket");
  } else if (!sys::Prepare(Native(made.handle_))) {
    problem = Describe("setting up the socket");
    made.Close();
  }
  return made;
}

bool CSocket::Bind(const tagSocketAddress& address, std::string& problem) {
  const sockaddr_in native = NativeAddress(address);
  if (bind(Native(handle_), reinterpret_cast<const sockaddr*>(&native), sizeof native) == 0) {
    return true;
  }
  problem = AddressText(address) + ": " + Describe("bind");
  Close();
  return false;
}

CSocket CSocket::BindDatagram(const tagSocketAddress& address, std::string& problem) {
  CSocket made = Make(SOCK_DGRAM, problem);
  if (made.IsOpen()) {
    // Not for a free port: it could be one that another such socket has already.
    if (address.port != 0) {
      SetOption(made.handle_, SOL_SOCKET, SO_REUSEADDR, 1);
    }
    made.Bind(address, problem);
  }
  return made;
}

CSocket CSocket::Listen(const tagSocketAddress& address, std::string& problem) {
  CSocket made = Make(SOCK_STREAM, problem);
  if (!made.IsOpen()) {
    return made;
  }
  if (sys::kListenersReuseAddress) {
    SetOption(made.handle_, SOL_SOCKET, SO_REUSEADDR, 1);
  }
  if (made.Bind(address, problem) && listen(Native(made.handle_), kBacklog) != 0) {
    problem = AddressText(address) + ": " + Describe("listen");
    made.Close();
  }
  return made;
}

SocketResult CSocket::Connect(const tagSocketAddress& address, std::uint32_t timeout_ms, CSocket& connected) {
  std::string problem;
  CSocket made = Make(SOCK_STREAM, problem);
  if (!made.IsOpen()) {
    return SocketResult::kFailed;
  }
  const sockaddr_in native = NativeAddress(address);
  int error = 0;
  if (connect(Native(made.handle_), reinterpret_cast<const sockaddr*>(&native), sizeof native) != 0) {
    error = sys::LastError();
    if (sys::IsWouldBlock(error)) {
      if (!sys::WaitForConnect(Native(made.handle_), timeout_ms)) {
        return SocketResult::kUnreachable;
      }
      sys::Length size = sizeof error;
      getsockopt(Native(made.handle_), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size);
    }
  }
  if (error != 0) {
    return sys::IsRefused(error) ? SocketResult::kRefused : SocketResult::kUnreachable;
  }
  SetOption(made.handle_, IPPROTO_TCP, TCP_NODELAY, 1);
  connected = std::move(made);
  return SocketResult::kDone;
}

CSocket CSocket::Accept() const {
  CSocket accepted;
  accepted.handle_ = static_cast<std::intptr_t>(accept(Native(handle_), nullptr, nullptr));
  if (accepted.IsOpen()) {
    if (!sys::Prepare(Native(accepted.handle_))) {
      accepted.Close();
    } else {
      SetOption(accepted.handle_, IPPROTO_TCP, TCP_NODELAY, 1);
    }
  }
  return accepted;
}

tagTransfer CSocket::Send(std::string_view bytes) const {
  return Moved(send(Native(handle_), bytes.data(), OneCall(bytes.size()), sys::kSendFlags));
}

tagTransfer CSocket::Receive(std::span<char> buffer) const {
  const tagTransfer moved = Moved(recv(Native(handle_), buffer.data(), OneCall(buffer.size()), 0));
  return moved.result == SocketResult::kDone && moved.size == 0 ? tagTransfer{SocketResult::kClosed, 0}
                                                                : moved;
}

void CSocket::ShutdownSend() const {
  constexpr int kSendDirection = 1;  // SHUT_WR and SD_SEND alike
  shutdown(Native(handle_), kSendDirection);
}

bool CSocket::SendTo(std::string_view datagram, const tagSocketAddress& to) const {
  const sockaddr_in native = NativeAddress(to);
  return sendto(Native(handle_), datagram.data(), OneCall(datagram.size()), sys::kSendFlags,
                reinterpret_cast<const sockaddr*>(&native), sizeof native) >= 0;
}

tagTransfer CSocket::ReceiveFrom(std::span<char> buffer, tagSocketAddress& from) const {
  sockaddr_in native{};
  sys::Length length = sizeof native;
  const tagTransfer moved = Moved(recvfrom(Native(handle_), buffer.data(), OneCall(buffer.size()), 0,
                                           reinterpret_cast<sockaddr*>(&native), &length));
  from = FromNative(native);
  return moved;
}

tagSocketAddress CSocket::LocalAddress() const {
  sockaddr_in native{};
  sys::Length length = sizeof native;
  getsockname(Native(handle_), reinterpret_cast<sockaddr*>(&native), &length);
  return FromNative(native);
}

void WaitForSockets(std::span<tagSocketWait> waits, std::uint32_t timeout_ms) {
  std::vector<sys::PollItem> items;
  items.reserve(waits.size());
  for (const tagSocketWait& wait : waits) {
    const int events = (wait.wants_read ? sys::kPollRead : 0) | (wait.wants_write ? sys::kPollWrite : 0);
    items.push_back({Native(wait.socket->Handle()), static_cast<short>(events), 0});
  }
  const int ready =
      sys::Poll(items.data(), items.size(), static_cast<int>(std::min<std::uint32_t>(timeout_ms, 1u << 30)));
  for (std::size_t i = 0; i < items.size(); ++i) {
    const short events = ready > 0 ? items[i].revents : short{0};
    const bool is_broken = (events & (POLLERR | POLLHUP | POLLNVAL)) != 0;
    waits[i].is_readable = waits[i].wants_read && (is_broken || (events & sys::kPollRead) != 0);
    waits[i].is_writable = waits[i].wants_write && (is_broken || (events & sys::kPollWrite) != 0);
  }
}

}  // namespace lxemu
