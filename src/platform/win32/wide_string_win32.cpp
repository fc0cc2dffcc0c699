#include "platform/wide_string.h"

#include <windows.h>

namespace tavira {

bool EqualsIgnoringCase(WideView left, WideView right) {
  // Characters are folded one by one, so that texts of different length differ; and the call refuses null.
  if (left.size() != right.size() || left.empty()) {
    return left.size() == right.size();
  }
  return ::CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE) == CSTR_EQUAL;
}

}  // namespace tavira
