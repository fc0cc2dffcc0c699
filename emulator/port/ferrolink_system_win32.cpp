#include <windows.h>

#include <string>

#include "emulator/port/ferrolink_system.h"

namespace lxemu {

// From Windows itself: the C run-time's copy of the environment misses what the host set after its start.
std::filesystem::path EnvironmentPath(const char* name) {
  const std::string ascii = name;
  const std::wstring wide(ascii.begin(), ascii.end());
  std::wstring value(GetEnvironmentVariableW(wide.c_str(), nullptr, 0), L'\0');
  value.resize(GetEnvironmentVariableW(wide.c_str(), value.data(), static_cast<DWORD>(value.size())));
  return value;
}

std::filesystem::path LibraryFolder() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&LibraryFolder), &module);
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
  return std::filesystem::path(path).parent_path();
}

}  // namespace lxemu
