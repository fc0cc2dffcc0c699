#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tavira::test {

inline constexpr std::string_view kBase64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/** Decodes one character at a time, as the format is defined; what the fast decoder must agree with. */
inline std::string DecodeBase64OneByOne(std::string_view text) {
  std::string bytes;
  std::uint32_t bits = 0;
  int waiting = 0;  // bits that are no byte yet
  for (const char c : text) {
    if (const std::size_t value = kBase64Alphabet.find(c); value != kBase64Alphabet.npos) {
      bits = bits << 6 | static_cast<std::uint32_t>(value);
      waiting += 6;
      if (waiting >= 8) {
        waiting -= 8;
        bytes += static_cast<char>(bits >> waiting);
      }
    }
  }
  return bytes;
}

}  // namespace tavira::test
