#include "names/ascii_text.h"

#include <algorithm>

namespace tvmgr {

bool IsPlainAscii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

std::string ToHex(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string hex;
  hex.reserve(bytes.size() * 2);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    hex += kDigits[byte >> 4];
    hex += kDigits[byte & 0x0F];
  }
  return hex;
}

std::string UpperAscii(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') {
      c = static_cast<char>(c - 'a' + 'A');
    }
  }
  return upper;
}

bool EqualsIgnoreCase(std::string_view left, std::string_view right) {
  return left.size() == right.size() && UpperAscii(left) == UpperAscii(right);
}

}  // namespace tvmgr
