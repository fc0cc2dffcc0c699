#include "platform/profile_file.h"

#include <windows.h>

namespace tavira {
namespace {

/** As long as the system makes a path. */
constexpr std::size_t kLongestPath = 32768;

class CWin32ProfileFile final : public IProfileFile {
 public:
  WideString ReadWide(const WideString& path, const char* section, const char* key,
                      std::size_t buffer_size) override {
    WideString value(buffer_size, L'\0');
    value.resize(::GetPrivateProfileStringW(WidenAscii(section).c_str(), WidenAscii(key).c_str(), L"",
                                            value.data(), static_cast<DWORD>(value.size()), path.c_str()));
    return value;
  }

  WideString ModulePath() override {
    HMODULE module = nullptr;
    constexpr DWORD kFlags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!::GetModuleHandleExW(kFlags, reinterpret_cast<const wchar_t*>(&MakeProfileFile), &module)) {
      return {};
    }
    WideString path(kLongestPath, L'\0');
    path.resize(::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
    return path;
  }
};

}  // namespace

std::unique_ptr<IProfileFile> MakeProfileFile() {
  return std::make_unique<CWin32ProfileFile>();
}

}  // namespace tavira
