#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace recorder {

/// The six entry points of the port library, and a gap: calls that could not be written down.
enum class CallKind {
  kInitialize,
  kTerminate,
  kSendData,
  kReceiveData,
  kClearReceiveData,
  kGetPortComIndex,
  kLost
};

/// In the order of CallKind, as a transcript writes them.
inline constexpr std::array<std::string_view, 7> kCallNames = {
    "Initialize", "Terminate", "SendData", "ReceiveData", "ClearReceiveData", "GetPortComIndex", "lost"};

inline constexpr std::string_view CallName(CallKind kind) {
  return kCallNames[static_cast<std::size_t>(kind)];
}

/// The port description that a host opens a port with.
struct tagPortRecord {
  std::int32_t port_type = 0;
  std::optional<std::u16string> texts[3];  ///< nothing: a null pointer
  std::int32_t data_used = 0;
  std::string data;  ///< of the 16 bytes all but the zeros at the end

  bool operator==(const tagPortRecord&) const = default;
};

/// One call as a transcript tells it. Nothing in an optional member: a null pointer was passed.
struct tagCall {
  std::size_t line = 0;        ///< of its beginning, counted from 1
  std::uint64_t start = 0;     ///< us since the recording began
  std::uint64_t duration = 0;  ///< us inside the library
  std::uint32_t thread = 0;    ///< the system's number
  CallKind kind = CallKind::kLost;
  bool is_finished = false;  ///< false: it had not come back when the recording ended, or threw
  std::int32_t result = 0;   ///< of a finished call; 0 where it was not seen (see HasSeenResult)
  std::uint64_t lost = 0;    ///< kLost: how many calls are missing here
  std::optional<tagPortRecord> description;  ///< Initialize
  std::uint32_t size = 0;                    ///< SendData: its size argument
  bool has_buffer = false;                   ///< ReceiveData: false for a question how much waits
  std::optional<std::uint32_t> room;         ///< ReceiveData: the count as it was passed in
  std::optional<std::uint32_t> count;        ///< ReceiveData: the count as it came back
  std::optional<std::string> bytes;          ///< sent, or received with result 0

  bool operator==(const tagCall&) const = default;
};

/// The two entry points whose arguments nobody knows are passed on by a jump: what they return is not seen.
inline constexpr bool HasSeenResult(CallKind kind) {
  return kind != CallKind::kClearReceiveData && kind != CallKind::kGetPortComIndex && kind != CallKind::kLost;
}

struct tagTranscript {
  std::vector<tagCall> calls;  ///< in the order of their beginnings
  std::size_t line_count = 0;
  bool is_cut = false;   ///< the last line is incomplete: the host was ended while it was written
  bool has_end = false;  ///< the last call is followed by the line that says so
};

}  // namespace recorder
