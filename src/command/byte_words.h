#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tavira {

/** Eight bytes of a text as one number, the first of them lowest. */
using ByteWord = std::uint64_t;

inline ByteWord LoadWord(const char* text) {
  static_assert(std::endian::native == std::endian::little);
  ByteWord word = 0;
  std::memcpy(&word, text, sizeof word);
  return word;
}

/**
 * Marks the bytes of a word that equal `byte` with their highest bit. The lowest mark is always right; above
 * it there may be wrong ones.
 */
constexpr ByteWord MarkEqualBytes(ByteWord word, char byte) {
  constexpr ByteWord kOnes = 0x0101010101010101;
  const ByteWord difference = word ^ kOnes * static_cast<std::uint8_t>(byte);
  return (difference - kOnes) & ~difference & kOnes << 7;
}

/** The place of the lowest mark, 0 to 7. */
constexpr std::size_t FirstMark(ByteWord marks) {
  return static_cast<std::size_t>(std::countr_zero(marks)) / 8;
}

}  // namespace tavira
