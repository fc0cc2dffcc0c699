#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace recorder {

/// The first line of every transcript. Another number: another format.
inline constexpr std::string_view kHeaderLine = "Ferrolink transcript 1";

inline constexpr std::string_view kInterrupted = " ...";  ///< ends a line whose call goes on
inline constexpr std::string_view kResumed = "...";       ///< begins the rest of such a call
inline constexpr std::string_view kEndWord = "end";       ///< the last line
inline constexpr std::string_view kNull = "null";         ///< a null pointer
inline constexpr std::string_view kBuffer = "buffer";     ///< a pointer to a place for bytes

inline constexpr std::uint64_t kMicrosecondsPerSecond = 1'000'000;

/// A text of a port description is not followed any further: something else must be wrong with it.
inline constexpr std::size_t kLongestText = 32'767;

}  // namespace recorder
