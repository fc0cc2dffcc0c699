#include "transcript/escape.h"

#include <algorithm>
#include <charconv>

namespace recorder {
namespace {

constexpr char kHex[] = "0123456789abcdef";

constexpr bool IsPrintable(unsigned value) {
  return value >= ' ' && value <= '~';
}

constexpr bool NeedsBackslash(unsigned value) {
  return value == '"' || value == '\\';
}

// "\x1b": the letter, and as many hexadecimal digits as asked for.
std::size_t EscapeNumber(unsigned value, char letter, std::size_t digits, char* place) {
  place[0] = '\\';
  place[1] = letter;
  for (std::size_t i = 0; i < digits; ++i) {
    place[2 + i] = kHex[value >> 4 * (digits - 1 - i) & 15];
  }
  return 2 + digits;
}

std::size_t EscapePair(char letter, char* place) {
  place[0] = '\\';
  place[1] = letter;
  return 2;
}

std::optional<unsigned> TakeHex(std::string_view& text, std::size_t digits) {
  if (text.size() < digits) {
    return std::nullopt;
  }
  unsigned value = 0;
  const char* end = text.data() + digits;
  const auto [stop, error] = std::from_chars(text.data(), end, value, 16);
  text.remove_prefix(digits);
  return error == std::errc{} && stop == end ? std::optional(value) : std::nullopt;
}

// One character or escape from the front of the text.
std::optional<unsigned> TakeOne(std::string_view& text, char number_letter, std::size_t digits) {
  const char first = text.front();
  text.remove_prefix(1);
  if (first != '\\') {
    const auto value = static_cast<unsigned char>(first);
    return IsPrintable(value) && !NeedsBackslash(value) ? std::optional<unsigned>(value) : std::nullopt;
  }
  if (text.empty()) {
    return std::nullopt;
  }
  const char letter = text.front();
  text.remove_prefix(1);
  if (letter == number_letter) {
    return TakeHex(text, digits);
  }
  if (number_letter == 'x' && letter == 'r') {
    return '\r';
  }
  if (number_letter == 'x' && letter == 'n') {
    return '\n';
  }
  const auto value = static_cast<unsigned char>(letter);
  return NeedsBackslash(value) ? std::optional<unsigned>(value) : std::nullopt;
}

}  // namespace

std::size_t EscapeByte(char byte, char* place) {
  const auto value = static_cast<unsigned char>(byte);
  if (NeedsBackslash(value) || byte == '\r' || byte == '\n') {
    return EscapePair(byte == '\r' ? 'r' : byte == '\n' ? 'n' : byte, place);
  }
  if (IsPrintable(value)) {
    place[0] = byte;
    return 1;
  }
  return EscapeNumber(value, 'x', 2, place);
}

std::size_t EscapeUnit(char16_t unit, char* place) {
  if (NeedsBackslash(unit)) {
    return EscapePair(static_cast<char>(unit), place);
  }
  if (IsPrintable(unit)) {
    place[0] = static_cast<char>(unit);
    return 1;
  }
  return EscapeNumber(unit, 'u', 4, place);
}

std::optional<std::string> UnescapeBytes(std::string_view text, std::size_t expected) {
  std::string bytes;
  bytes.reserve(std::min(expected, text.size()));
  while (!text.empty()) {
    const std::optional<unsigned> value = TakeOne(text, 'x', 2);
    if (!value) {
      return std::nullopt;
    }
    bytes += static_cast<char>(static_cast<unsigned char>(*value));
  }
  return bytes;
}

std::optional<std::u16string> UnescapeUnits(std::string_view text) {
  std::u16string units;
  while (!text.empty()) {
    const std::optional<unsigned> value = TakeOne(text, 'u', 4);
    if (!value || *value == 0) {
      return std::nullopt;
    }
    units += static_cast<char16_t>(*value);
  }
  return units;
}

}  // namespace recorder
