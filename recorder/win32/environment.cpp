#include "win32/environment.h"

namespace recorder {

std::wstring Environment(const wchar_t* name) {
  std::wstring value(GetEnvironmentVariableW(name, nullptr, 0), L'\0');
  value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
  return value;
}

// Not std::filesystem::absolute, to which \\server\share is a relative path.
std::filesystem::path FullPath(const std::wstring& path) {
  std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full.empty() ? path : full;
}

std::filesystem::path ModuleFile(HMODULE module_or_null) {
  constexpr std::size_t kLongestPath = 32'768;
  std::wstring path(kLongestPath, L'\0');
  path.resize(GetModuleFileNameW(module_or_null, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

std::string Utf8(const std::wstring& text) {
  const int units = static_cast<int>(text.size());
  std::string utf8(static_cast<std::size_t>(
                       WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr)),
                   '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), units, utf8.data(), static_cast<int>(utf8.size()), nullptr,
                      nullptr);
  return utf8;
}

}  // namespace recorder
