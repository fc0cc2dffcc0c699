#pragma once

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

/** Equal but for the case of letters, those of every script, as the system itself compares names. */
bool EqualsIgnoringCase(WideView left, WideView right);

/** Whether `text` begins with `prefix`, compared in the same way; an empty prefix begins every text. */
inline bool StartsWithIgnoringCase(WideView text, WideView prefix) {
  return EqualsIgnoringCase(text.substr(0, prefix.size()), prefix);
}

/** The text that a host's pointer names, up to its terminator; empty for null. */
inline WideView ViewHostText(const TvmgrChar* text) {
  return text == nullptr ? WideView() : WideView(text);
}

}  // namespace tavira
