#pragma once

#include <algorithm>
#include <bitset>
#include <cstddef>
#include <string_view>

namespace tavira {

/**
 * Which bytes open a character of two bytes in the code page; none in a code page of one byte a character. The
 * second byte of such a character may look like "^", "~" or a letter: text that may hold names is searched
 * character by character.
 */
class CLeadBytes {
 public:
  CLeadBytes() = default;

  /** `is_lead` is asked for each byte from 0x80 to 0xFF; none below opens a character in any code page. */
  template <typename Predicate>
  explicit CLeadBytes(Predicate is_lead) {
    for (unsigned byte = 0x80; byte <= 0xFF; ++byte) {
      leads_[byte] = is_lead(static_cast<unsigned char>(byte));
    }
  }

  /** The first place from `from` on, which begins a character, where `wanted` stands; npos when it does not. */
  std::size_t Find(std::string_view text, std::string_view wanted, std::size_t from = 0) const {
    std::size_t found = text.find(wanted, from);
    while (found != std::string_view::npos && leads_.any()) {
      from = CharacterFrom(text, from, found);
      if (from == found) {
        break;
      }
      found = text.find(wanted, from);
    }
    return found;
  }

  /** As Find, of any one of the characters of `wanted`. */
  std::size_t FindFirstOf(std::string_view text, std::string_view wanted, std::size_t from = 0) const {
    std::size_t found = std::string_view::npos;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      found = std::min(found, Find(text.substr(0, found), wanted.substr(i, 1), from));
    }
    return found;
  }

 private:
  /** The first character at or behind `at`, walking from the character at `from`. */
  std::size_t CharacterFrom(std::string_view text, std::size_t from, std::size_t at) const {
    while (from < at) {
      from += leads_[static_cast<unsigned char>(text[from])] ? 2 : 1;
    }
    return from;
  }

  std::bitset<256> leads_;
};

}  // namespace tavira
