#include "discovery/network/connect.h"

namespace tavira {
namespace {

constexpr std::uint32_t kRequestPollMs = 100;

}  // namespace

CConnect::CConnect(const tagNetPlatform& platform, std::int32_t type, const tagEndpoint& remote,
                   tagNetError& error)
    : platform_(platform), type_(type), remote_(remote), error_(error), socket_(platform.sockets) {}

CConnect::~CConnect() {
  running_ = 0;
  thread_.reset();
}

bool CConnect::StartConnectThread() {
  // Before the thread exists: set by the thread itself, it could come after the destructor's clearing.
  running_ = 1;
  std::uint32_t code = 0;
  thread_ = platform_.threads.Start([this] { Run(); }, code);
  if (!thread_) {
    error_ = {code, "CConnect::startConnectThread CreateThread():"};
  }
  return thread_ != nullptr;
}

bool CConnect::PrepareSocket() {
  socket_.Reset(platform_.sockets.Create(type_));
  if (!socket_.IsOpen()) {
    Fail("socket():");
    return false;
  }
  if (!platform_.sockets.Bind(socket_.Get(), {})) {
    Fail("bind():");
    return false;
  }
  return true;
}

void CConnect::RequestConnect() {
  state_ = kNone;
  cancel_ = 0;
  connect_requested_ = 1;
}

bool CConnect::HasFailed(std::uint32_t& code) const {
  if (state_ != kFailed) {
    return false;
  }
  code = connect_error_;
  return true;
}

void CConnect::Run() noexcept {
  while (running_ != 0) {
    if (connect_requested_ != 0) {
      TryToConnect();
      connect_requested_ = 0;
    }
    platform_.clock.Sleep(kRequestPollMs);
  }
}

void CConnect::TryToConnect() {
  const bool connected = platform_.sockets.Connect(socket_.Get(), remote_);
  connect_error_ = connected ? kSocketErrorTimedOut : platform_.sockets.LastError();
  if (connected && cancel_ == 0) {
    state_ = kConnected;
    return;
  }
  socket_.Reset();
  state_ = kFailed;
}

void CConnect::Fail(const char* text) {
  error_ = {platform_.sockets.LastError(), text};
}

}  // namespace tavira
