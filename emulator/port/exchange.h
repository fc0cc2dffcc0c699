#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "emulator/port/fault_plan.h"
#include "emulator/printer/printer.h"

namespace lxemu {

/// Payload bytes of one send and of its answer, each cut after kMaximumLogged bytes.
struct tagExchange {
  static constexpr std::size_t kMaximumLogged = std::size_t{1} << 20;

  std::string sent;              ///< without the frame marks; of a send without a proper frame, the raw bytes
  std::string answer;            ///< as it was made available; empty when there was none
  std::uint64_t sent_bytes = 0;  ///< full length of what was sent
  std::uint64_t answer_bytes = 0;  ///< full length of the answer
  bool is_framed = false;          ///< the bytes had both frame marks

  void RecordSent(std::string_view raw);
  void RecordAnswer(std::string_view full_answer);
};

// The marks that enclose the command bytes of one send.
inline constexpr std::string_view kFrameStart = "\x10\x1B\x1D\x1B\x1B";
inline constexpr std::string_view kFrameEnd = "\x10\x1B\x1D\x1B\x1C";

/// The command bytes between the frame marks; a null view when either mark is missing.
std::string_view UnwrapFrame(std::string_view frame);

/// Lets the printer run what one send brought (nothing, when that is no proper frame) and returns what is
/// left of its answer after the faults `silent`, `silent_from` and `cut_answer_at`. Fills the exchange.
std::string RunExchange(CPrinter& printer, tagFaultPlan& faults, std::string_view raw, tagExchange& exchange);

}  // namespace lxemu
