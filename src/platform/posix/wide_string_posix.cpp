#include "platform/wide_string.h"

#include <algorithm>
#include <clocale>
#include <cwctype>

namespace tavira {

bool EqualsIgnoringCase(WideView left, WideView right) {
  // Not the program's own locale, which a host may set to one without letters beyond ASCII.
  static const locale_t kLetters = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  const auto fold = [](TvmgrChar c) {
    return kLetters == nullptr ? ::towupper(c) : ::towupper_l(c, kLetters);
  };
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [fold](TvmgrChar a, TvmgrChar b) { return fold(a) == fold(b); });
}

}  // namespace tavira
