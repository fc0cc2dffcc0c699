#pragma once

#include <cstdint>
#include <string>

#include "emulator/network/socket.h"
#include "emulator/port/exchange.h"

namespace lxemu {

/// The commands as a host sends them.
inline std::string Frame(const std::string& commands) {
  return std::string(kFrameStart) + commands + std::string(kFrameEnd);
}

/// Whether bytes, a connection or the peer's end come in time.
inline bool WaitReadable(const CSocket& socket, std::uint32_t timeout_ms) {
  tagSocketWait wait{&socket, true};
  WaitForSockets({&wait, 1}, timeout_ms);
  return wait.is_readable;
}

}  // namespace lxemu
