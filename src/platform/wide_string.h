#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "tavira/TaviraManager.h"

namespace tavira {

/** UTF-16 text; std::wstring on Windows, so that host and Win32 pointers need no cast. */
using WideString = std::basic_string<TvmgrChar>;
using WideView = std::basic_string_view<TvmgrChar>;

/** The wide form of ASCII text. */
inline WideString WidenAscii(std::string_view ascii) {
  return WideString(ascii.begin(), ascii.end());
}

/** Equal length and equal characters, ASCII letters folded. */
inline bool EqualsIgnoringCase(WideView left, WideView right) {
  const auto fold = [](TvmgrChar c) {
    return c >= 'a' && c <= 'z' ? static_cast<TvmgrChar>(c - 'a' + 'A') : c;
  };
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [fold](TvmgrChar a, TvmgrChar b) { return fold(a) == fold(b); });
}

/** Whether `text` begins with `prefix`, ASCII letters folded; an empty prefix begins every text. */
inline bool StartsWithIgnoringCase(WideView text, WideView prefix) {
  return EqualsIgnoringCase(text.substr(0, prefix.size()), prefix);
}

/** The text that a host's pointer names, up to its terminator; empty for null. */
inline WideView ViewHostText(const TvmgrChar* text) {
  return text == nullptr ? WideView() : WideView(text);
}

}  // namespace tavira
