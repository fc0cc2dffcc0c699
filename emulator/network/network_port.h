#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "emulator/network/port_record.h"
#include "emulator/network/socket.h"
#include "emulator/port/exchange.h"

namespace lxemu {

// What goes wrong between the stand-in port library and a network printer.
inline constexpr std::int32_t kPortNoAddress = -1010;    ///< not "host" or "host:port", or an unknown host
inline constexpr std::int32_t kPortRefused = -1011;      ///< the address is there, no printer listens
inline constexpr std::int32_t kPortUnreachable = -1012;  ///< nobody answered within 3 s, or there is no way
inline constexpr std::int32_t kPortBroken = -1013;       ///< the connection broke
inline constexpr std::int32_t kPortStalled = -1014;      ///< connected, but nothing moved for so long
inline constexpr std::int32_t kPortNoPrinter = -1015;    ///< what answers there is no emulated printer

/// How long a network port waits at most.
struct tagNetworkBounds {
  std::uint32_t connect_ms = 3000;
  std::uint32_t stall_ms = 30000;  ///< without a single byte moved, the printer at work included
};

/// A port with a network printer behind it: one connection from Open to Close. Not synchronised; one thread
/// at a time. Calls on a closed port return kPortNotOpen.
class CNetworkPort {
 public:
  explicit CNetworkPort(const tagNetworkBounds& bounds = {}) : bounds_(bounds) {}

  /// Connects to "host" or "host:port" (port 9100 unless given).
  std::int32_t Open(std::string_view address);
  /// Ends the connection. What was sent is carried out, an answer that was not read is lost.
  std::int32_t Close();
  /// Hands over the bytes of one send; returns when the printer has carried them out. The answer to an
  /// earlier send is lost then.
  std::int32_t Send(const std::uint8_t* data, std::uint32_t size);
  /// As ReceiveData of the port library; an answer that has begun to arrive is waited for to its end.
  std::int32_t Receive(std::uint8_t* buffer_or_null, std::uint32_t* size);
  /// Drops what waits.
  std::int32_t Clear();

  bool IsOpen() const { return socket_.IsOpen(); }

 private:
  std::int32_t SendAll(std::string_view bytes);
  std::int32_t WaitUntilTaken();
  /// Receives what is there and takes it apart. An error code when the connection is of no use any more.
  std::int32_t Pump();
  std::int32_t TakeRecords();
  /// Waits for bytes to come in, or for room for bytes to go out, as long as a stall may last.
  std::int32_t WaitForPeer(bool for_room);

  tagNetworkBounds bounds_;
  CSocket socket_;
  std::uint32_t number_ = 0;   // of the last send
  std::uint32_t taken_ = 0;    // the last one that was carried out
  bool wants_answer_ = false;  // to the last send, and it is not here yet
  std::string incoming_;       // not yet taken apart
  std::string answer_;         // what waits to be read
  std::size_t read_position_ = 0;
  std::string receive_buffer_;
};

}  // namespace lxemu
