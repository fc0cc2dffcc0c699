#pragma once

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

#include "discovery/network/net_proc.h"
#include "discovery/search/search_protocol.h"

namespace tavira {

/** The driver of the printers' UDP search protocol: one request, one answer, over a connection of its own. */
class CUPIQLDP {
 public:
  /**
   * `port` (in this machine's byte order) is where the printer listens. The connection outlives the driver.
   */
  explicit CUPIQLDP(INetProc& connection, std::uint16_t port = kSearchPort)
      : connection_(connection), port_(port) {}
  ~CUPIQLDP() { connection_.Close(0); }
  CUPIQLDP(const CUPIQLDP&) = delete;
  CUPIQLDP& operator=(const CUPIQLDP&) = delete;

  /** Addresses the printer; 65535 for an address of another kind than 1. */
  std::uint32_t Open(const tagNetAddress& address);

  /** The hardware address of the printer meant, 12 hexadecimal digits; any other text means none. */
  void SetTargetMac(std::string_view text) { target_ = ParseMac(text); }

  /**
   * One exchange. 0 with the whole answer; 65535 when it failed or the printer rejected it (`answer` stays);
   * 0x8000FFFF when six receives of 3 s brought nothing. Given up between receives, with 65535, when a stop
   * is requested.
   */
  std::uint32_t Exchange(std::uint32_t command, std::string& answer, const std::stop_token& given_up = {});

 private:
  void DropOldAnswers();

  INetProc& connection_;
  const std::uint16_t port_;
  std::optional<MacAddress> target_;
  std::string buffer_;
};

}  // namespace tavira
