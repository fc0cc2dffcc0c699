#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tavira::test {

/** Decodes one character at a time, as the format is defined; what the fast decoder must agree with. */
inline std::string DecodeBase64OneByOne(std::string_view text) {
  std::string bytes;
  std::uint32_t bits = 0;
  int count = 0;
  for (const char c : text) {
    std::uint32_t value = 0;
    if (c >= 'A' && c <= 'Z') {
      value = static_cast<std::uint32_t>(c - 'A');
    } else if (c >= 'a' && c <= 'z') {
      value = static_cast<std::uint32_t>(c - 'a' + 26);
    } else if (c >= '0' && c <= '9') {
      value = static_cast<std::uint32_t>(c - '0' + 52);
    } else if (c == '+' || c == '/') {
      value = c == '+' ? 62 : 63;
    } else {
      continue;
    }
    bits = bits << 6 | value;
    if (++count == 4) {
      bytes += {static_cast<char>(bits >> 16), static_cast<char>(bits >> 8), static_cast<char>(bits)};
      count = 0;
    }
  }
  if (count == 2) {
    bytes += static_cast<char>(bits >> 4);
  } else if (count == 3) {
    bytes += {static_cast<char>(bits >> 10), static_cast<char>(bits >> 2)};
  }
  return bytes;
}

}  // namespace tavira::test
