#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tavira {

/** The first characters of a group of four that is not complete yet. */
struct tagBase64Group {
  std::array<std::uint8_t, 4> characters{};
  std::size_t count = 0;
};

/**
 * Decodes base64 text in the standard alphabet, which may come in pieces. Bytes outside the alphabet ("=",
 * line breaks) are passed over; each four characters give three bytes; two or three left over at the end give
 * one or two, a single one gives none. Linear on any input. Both throw std::bad_alloc.
 */
class CBase64Decoder {
 public:
  /** Appends the bytes of the next piece of the text. */
  void Append(std::string_view text, std::string& bytes);

  /** Ends the text: appends what is left over. */
  void Finish(std::string& bytes);

 private:
  tagBase64Group held_;
};

/** The most bytes that so many characters give. */
constexpr std::size_t LargestDecodedSize(std::size_t characters) {
  return characters / 4 * 3 + 3;
}

/** Decodes a whole text, with one allocation. Throws std::bad_alloc. */
std::string DecodeBase64(std::string_view text);

}  // namespace tavira
