#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "emulator/network/search_plan.h"

namespace lxemu {

/// Who answers a network search.
struct tagSearchIdentity {
  std::string model = "LX-R4100";     ///< the first name, unless the plan has one
  std::string name;                   ///< the second name, unless the plan has one
  std::array<std::uint8_t, 6> mac{};  ///< the hardware address that requests may be meant for
};

/// One datagram of an answer.
struct tagSearchAnswer {
  std::string bytes;
  bool from_other_port = false;
  std::uint32_t after_ms = 0;  ///< milliseconds from the question
};

/// True for the datagram that a host broadcasts to find printers.
bool IsSearchBroadcast(std::string_view datagram);

/// The datagrams that a printer sends when it receives this one; empty when it is no search datagram, is
/// meant for another printer, or the plan is silent about it. Any bytes are safe.
std::vector<tagSearchAnswer> AnswerSearch(std::string_view datagram, const tagSearchIdentity& identity,
                                          const tagSearchPlan& plan);

}  // namespace lxemu
