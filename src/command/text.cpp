#include "command/text.h"

#include <algorithm>

namespace tavira {

bool EqualsIgnoringCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return FoldCase(a) == FoldCase(b); });
}

std::int32_t ParseStrictDecimal(std::string_view text) {
  const bool negative = text.starts_with('-');
  std::uint32_t number = 0;
  for (const char digit : text.substr(negative ? 1 : 0)) {
    if (digit < '0' || digit > '9') {
      return 0;
    }
    number = number * 10 + static_cast<std::uint32_t>(digit - '0');
  }
  return static_cast<std::int32_t>(negative ? 0 - number : number);
}

}  // namespace tavira
