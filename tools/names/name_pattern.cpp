#include "names/name_pattern.h"

#include <cstddef>

namespace tvmgr {
namespace {

char Folded(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// Behind the character that begins at `at`.
std::size_t NextCharacter(std::string_view text, std::size_t at) {
  do {
    ++at;
  } while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U);
  return at;
}

}  // namespace

bool IsPattern(std::string_view text) {
  return text.find_first_of("*?") != std::string_view::npos;
}

bool MatchesPattern(std::string_view pattern, std::string_view name) {
  std::size_t at = 0;
  std::size_t in_name = 0;
  // Where the last * stands, and what it has taken so far; it takes more when the rest does not fit.
  std::size_t star = std::string_view::npos;
  std::size_t star_end = 0;
  while (in_name < name.size()) {
    if (at < pattern.size() && pattern[at] == '*') {
      star = at++;
      star_end = in_name;
    } else if (at < pattern.size() && pattern[at] == '?') {
      ++at;
      in_name = NextCharacter(name, in_name);
    } else if (at < pattern.size() && Folded(pattern[at]) == Folded(name[in_name])) {
      ++at;
      ++in_name;
    } else if (star != std::string_view::npos) {
      at = star + 1;
      star_end = NextCharacter(name, star_end);
      in_name = star_end;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', at) == std::string_view::npos;
}

}  // namespace tvmgr
