#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace lxemu {

/// The calls of a port that a fault plan can fail. A poll is ReceiveData without a buffer, a read one with a
/// buffer.
enum class PortCall { kInitialize, kSendData, kPoll, kRead };

/// Fails the Nth call of one entry point, counted from the moment the fault joined the plan.
struct tagCallFault {
  PortCall call = PortCall::kInitialize;
  std::uint32_t nth = 1;   ///< 1 is the next call
  std::int32_t code = -1;  ///< what the call returns instead of doing its work
  std::uint32_t seen = 0;  ///< calls counted so far; kept by the endpoint
};

/// What goes wrong between host and printer. The printer itself executes every stream that reaches it.
/// `Faults() = {}` ends all faults and starts the counts anew.
struct tagFaultPlan {
  std::uint32_t latency_ms = 0;              ///< from the send to the moment its whole answer is ready
  bool silent = false;                       ///< no answer ever arrives
  std::uint32_t silent_from = 0;             ///< no answer from the Nth send on (1 is the next one), 0: never
  std::optional<std::size_t> cut_answer_at;  ///< answers end after this many bytes
  std::uint32_t cut_from = 0;                ///< they do so from the Nth send on, 0: from the first
  std::optional<std::size_t> hang_up_at;     ///< a network connection breaks after this much of an answer
  std::vector<tagCallFault> call_faults;     ///< error codes of single calls
  std::uint32_t sends_seen = 0;              ///< sends counted for both; kept by the endpoint
};

/// Counts a call. True, with the code to return, when the plan fails it.
bool FindCallFault(tagFaultPlan& faults, PortCall call, std::int32_t& code);

}  // namespace lxemu
