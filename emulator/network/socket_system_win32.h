#pragma once

// What sockets are called on this system; socket_system_posix.h has the same names.
#include <winsock2.h>
#include <ws2tcpip.h>

#include <cstddef>
#include <cstdint>

namespace lxemu::socket_system {

using Handle = SOCKET;
using Length = int;
using Size = int;
using PollItem = WSAPOLLFD;

inline constexpr int kSendFlags = 0;
inline constexpr short kPollRead = POLLRDNORM;
inline constexpr short kPollWrite = POLLWRNORM;
// Here it would let two programs listen on one port; a closed listener's port is free at once anyway.
inline constexpr bool kListenersReuseAddress = false;

// The library stays in the process, as what it keeps for each thread does.
inline bool Start() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN, L"ws2_32.dll", &module);
  WSADATA data;
  return WSAStartup(MAKEWORD(2, 2), &data) == 0;
}

inline void Close(Handle handle) {
  closesocket(handle);
}

inline bool Prepare(Handle handle) {
  u_long on = 1;
  SetHandleInformation(reinterpret_cast<HANDLE>(handle), HANDLE_FLAG_INHERIT, 0);
  return ioctlsocket(handle, static_cast<long>(FIONBIO), &on) == 0;
}

inline int LastError() {
  return WSAGetLastError();
}

inline bool IsWouldBlock(int error) {
  return error == WSAEWOULDBLOCK || error == WSAEINPROGRESS;
}

inline bool IsRefused(int error) {
  return error == WSAECONNREFUSED;
}

inline int Poll(PollItem* items, std::size_t count, int timeout_ms) {
  return WSAPoll(items, static_cast<ULONG>(count), timeout_ms);
}

// True when a connect that is under way has come to an end, good or bad. Not with WSAPoll: older systems do
// not report a failed connect there.
inline bool WaitForConnect(Handle handle, std::uint32_t timeout_ms) {
  fd_set connected;
  fd_set failed;
  FD_ZERO(&connected);
  FD_ZERO(&failed);
  FD_SET(handle, &connected);
  FD_SET(handle, &failed);
  timeval timeout{static_cast<long>(timeout_ms / 1000), static_cast<long>(timeout_ms % 1000 * 1000)};
  return select(0, nullptr, &connected, &failed, &timeout) == 1;
}

}  // namespace lxemu::socket_system
