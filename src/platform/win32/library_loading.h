#pragma once

#include <windows.h>

namespace tavira {

/**
 * Loads a library; null when that fails. A damaged file makes the system ask the user, in a box that blocks the
 * host until it is answered: not while this runs.
 */
inline HMODULE LoadLibraryQuietly(const wchar_t* file_name) {
  DWORD earlier = 0;
  const bool is_set =
      ::SetThreadErrorMode(::GetThreadErrorMode() | SEM_FAILCRITICALERRORS, &earlier) != FALSE;
  const HMODULE library = ::LoadLibraryW(file_name);
  if (is_set) {
    ::SetThreadErrorMode(earlier, nullptr);
  }
  return library;
}

}  // namespace tavira
