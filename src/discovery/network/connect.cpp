#include "discovery/network/connect.h"

#include <new>
#include <system_error>

namespace tavira {
namespace {

constexpr std::uint32_t kRequestPollMs = 100;

}  // namespace

CConnect::CConnect(ISockets& sockets, IClock& clock, std::int32_t type, const tagEndpoint& remote,
                   tagNetError& error)
    : sockets_(sockets), clock_(clock), type_(type), remote_(remote), error_(error), socket_(sockets) {}

CConnect::~CConnect() {
  running_ = 0;
  if (thread_.joinable()) {
    thread_.join();
  }
}

bool CConnect::StartConnectThread() {
  constexpr const char* kText = "CConnect::startConnectThread CreateThread():";
  // Before the thread exists: set by the thread itself, it could come after the destructor's clearing.
  running_ = 1;
  try {
    thread_ = std::thread(&CConnect::Run, this);
    return true;
  } catch (const std::system_error& failure) {
    error_ = {static_cast<std::uint32_t>(failure.code().value()), kText};
  } catch (const std::bad_alloc&) {
    error_ = {static_cast<std::uint32_t>(std::errc::not_enough_memory), kText};
  }
  return false;
}

bool CConnect::PrepareSocket() {
  socket_.Reset(sockets_.Create(type_));
  if (!socket_.IsOpen()) {
    Fail("socket():");
    return false;
  }
  if (!sockets_.Bind(socket_.Get(), {})) {
    Fail("bind():");
    socket_.Reset();
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
    clock_.Sleep(kRequestPollMs);
  }
}

void CConnect::TryToConnect() {
  const bool connected = sockets_.Connect(socket_.Get(), remote_);
  connect_error_ = connected ? kSocketErrorTimedOut : sockets_.LastError();
  if (connected && cancel_ == 0) {
    state_ = kConnected;
    return;
  }
  socket_.Reset();
  state_ = kFailed;
}

void CConnect::Fail(const char* text) {
  error_ = {sockets_.LastError(), text};
}

}  // namespace tavira
