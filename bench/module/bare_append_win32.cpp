#include <windows.h>

#include "bench/module/bare_append.h"

bool tavira::bench::AppendBare(const std::filesystem::path& path, std::string_view bytes) {
  const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  DWORD count = 0;
  const bool written =
      ::SetFilePointerEx(file, LARGE_INTEGER{}, nullptr, FILE_END) != 0 &&
      ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) != 0;
  return ::CloseHandle(file) != 0 && written;
}
