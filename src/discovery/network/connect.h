#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "discovery/network/net_platform.h"

namespace tavira {

/** The last failed socket call of a connection. */
struct tagNetError {
  std::uint32_t code = 0;
  const char* text = ""; /**< the call's name, ASCII */
};

/**
 * One attempt to connect, on a thread of its own, so that the caller decides how long to wait.
 *
 * Use: StartConnectThread, PrepareSocket, RequestConnect, IsConnected until true or too late, TakeSocket. Of
 * its state only the words declared atomic are shared with the thread.
 */
class CConnect {
 public:
  /** `error` is the owner's and is written on the owner's thread alone. */
  CConnect(const tagNetPlatform& platform, std::int32_t type, const tagEndpoint& remote, tagNetError& error);

  /** Waits for the thread: up to 100 ms, and for a connect still hanging until the system gives it up. */
  ~CConnect();
  CConnect(const CConnect&) = delete;
  CConnect& operator=(const CConnect&) = delete;

  /** Throws std::bad_alloc. */
  bool StartConnectThread();

  /** Creates the socket and binds it to any local address. */
  bool PrepareSocket();

  /** Lets the thread connect the prepared socket. */
  void RequestConnect();

  bool IsConnected() const { return state_ == kConnected; }

  /** True when the attempt has failed; `code` then receives the system's number. */
  bool HasFailed(std::uint32_t& code) const;

  /** Drops a connect that still hangs as soon as it returns. */
  void Cancel() { cancel_ = 1; }

  /** Hands over the connected socket. */
  SocketHandle TakeSocket() { return socket_.Release(); }

 private:
  static constexpr std::int32_t kNone = 0;
  static constexpr std::int32_t kConnected = 1;
  static constexpr std::int32_t kFailed = -2;

  void Run() noexcept;
  void TryToConnect();
  void Fail(const char* text);

  const tagNetPlatform platform_;
  const std::int32_t type_;
  const tagEndpoint remote_;
  tagNetError& error_;

  // The thread's own from RequestConnect until the state changes.
  CSocket socket_;
  std::uint32_t connect_error_ = 0;

  std::atomic<std::int32_t> running_{0};
  std::atomic<std::int32_t> connect_requested_{0};
  std::atomic<std::int32_t> state_{kNone};
  std::atomic<std::int32_t> cancel_{0};
  std::unique_ptr<IThread> thread_;
};

}  // namespace tavira
