#pragma once

#include <cstdint>
#include <string_view>

namespace tavira {

/** What may stand around a name in a printer command. */
inline constexpr std::string_view kWhitespace = " \t\r\n";

/** "a" to "z" as "A" to "Z"; every other byte, above 0x7F too, as it is. */
constexpr char FoldCase(char byte) {
  return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
}

/** Equal length and equal bytes, ASCII letters folded. */
bool EqualsIgnoringCase(std::string_view left, std::string_view right);

/**
 * The number that a text of digits with at most one leading "-" stands for; 0 for anything else, not a
 * partial number. Wraps in 32 bits.
 */
std::int32_t ParseStrictDecimal(std::string_view text);

}  // namespace tavira
