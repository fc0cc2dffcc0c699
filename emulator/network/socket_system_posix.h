#pragma once

// What sockets are called on this system; socket_system_win32.h has the same names.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace lxemu::socket_system {

using Handle = int;
using Length = socklen_t;
using Size = std::size_t;
using PollItem = pollfd;

// No signal when the peer is gone.
inline constexpr int kSendFlags = MSG_NOSIGNAL;
inline constexpr short kPollRead = POLLIN;
inline constexpr short kPollWrite = POLLOUT;
// Without it, a port stays unusable for minutes after a program that had connections on it.
inline constexpr bool kListenersReuseAddress = true;

inline bool Start() {
  return true;
}

inline void Close(Handle handle) {
  close(handle);
}

inline bool Prepare(Handle handle) {
  return fcntl(handle, F_SETFD, FD_CLOEXEC) == 0 &&
         fcntl(handle, F_SETFL, fcntl(handle, F_GETFL) | O_NONBLOCK) == 0;
}

inline int LastError() {
  return errno;
}

inline bool IsWouldBlock(int error) {
  return error == EAGAIN || error == EWOULDBLOCK || error == EINPROGRESS || error == EINTR;
}

inline bool IsRefused(int error) {
  return error == ECONNREFUSED;
}

inline int Poll(PollItem* items, std::size_t count, int timeout_ms) {
  return poll(items, count, timeout_ms);
}

// True when a connect that is under way has come to an end, good or bad.
inline bool WaitForConnect(Handle handle, std::uint32_t timeout_ms) {
  pollfd item{handle, POLLOUT, 0};
  return poll(&item, 1, static_cast<int>(timeout_ms)) == 1;
}

}  // namespace lxemu::socket_system
