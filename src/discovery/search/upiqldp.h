#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "discovery/network/socket_proc.h"
#include "discovery/search/search_protocol.h"

namespace tavira {

/** How long a printer has for an answer: six receives of 3 s. */
inline constexpr std::uint32_t kAnswerTimeMs = 6 * 3000;

/**
 * The driver of the printers' UDP search protocol: one question, one answer, over a connection of its own.
 *
 * It never waits: whoever uses it waits for the connection's socket, alone or among others, then calls Take.
 */
class CUPIQLDP {
 public:
  /**
   * `port` (in this machine's byte order) is where the printer listens. The connection outlives the driver.
   */
  explicit CUPIQLDP(CSocketProc& connection, std::uint16_t port = kSearchPort)
      : connection_(connection), port_(port) {}
  ~CUPIQLDP() { connection_.Close(0); }
  CUPIQLDP(const CUPIQLDP&) = delete;
  CUPIQLDP& operator=(const CUPIQLDP&) = delete;

  /** Addresses the printer; 65535 for an address of another kind than 1, or without a socket. */
  std::uint32_t Open(const tagNetAddress& address);

  /** The hardware address of the printer meant, 12 hexadecimal digits; any other text means none. */
  void SetTargetMac(std::string_view text) { target_ = ParseMac(text); }

  /** Sends a question; what has arrived before counts no more. 0 or 65535. */
  std::uint32_t Ask(std::uint32_t command);

  /**
   * Takes what has arrived. 0 when it is the answer to the question; 65535 when the printer rejected it, or
   * nothing can be received; 0x8000FFFF when the answer has not come yet.
   *
   * Only what comes from the printer's address counts, from whichever port. What cannot be received, such as
   * a datagram that is too large, is passed over, and so is a late second copy of the answer before.
   */
  std::uint32_t Take();

  /** The whole last answer; empty before the first. */
  const std::string& Answer() const { return answer_; }

 private:
  void DropOldAnswers();
  std::uint32_t Receive(std::string_view& datagram);

  CSocketProc& connection_;
  const std::uint16_t port_;
  std::optional<MacAddress> target_;
  std::uint32_t command_ = 0;
  int failures_ = 0;
  std::string answer_;
  char buffer_[kMaxSearchAnswer];
};

}  // namespace tavira
