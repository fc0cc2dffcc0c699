#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace recorder {

/// The longest escape of one byte, and of one UTF-16 unit.
inline constexpr std::size_t kLongestEscape = 6;

/// Writes one byte as a transcript shows it to `place` and returns how many characters that took: printable
/// ASCII as it is, the quotation mark and the backslash behind a backslash, \r, \n, and \xHH for the rest.
std::size_t EscapeByte(char byte, char* place);

/// The same for a unit of UTF-16: \uHHHH for all but printable ASCII.
std::size_t EscapeUnit(char16_t unit, char* place);

/// The bytes between two quotation marks. Nothing when an escape is unknown or cut off, or when there is a
/// character that is never written as it is. `expected` is how many bytes it is said to be.
std::optional<std::string> UnescapeBytes(std::string_view text, std::size_t expected = 0);

/// The same for UTF-16; a zero, which would end the text, is refused.
std::optional<std::u16string> UnescapeUnits(std::string_view text);

}  // namespace recorder
