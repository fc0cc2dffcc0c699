#pragma once

#include <windows.h>

#include <string>

namespace tavira::test {

/** A registry key of this process alone, removed with all below it at the end. */
class CSandboxKey {
 public:
  CSandboxKey() {
    ::RegCreateKeyExW(HKEY_CURRENT_USER, path_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key_,
                      nullptr);
  }
  ~CSandboxKey() {
    ::RegCloseKey(key_);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
  }
  CSandboxKey(const CSandboxKey&) = delete;
  CSandboxKey& operator=(const CSandboxKey&) = delete;

  HKEY Get() const { return key_; }

  void SetText(const std::wstring& subkey, const wchar_t* name, const std::wstring& text) {
    Set(subkey, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
  }
  void SetNumber(const std::wstring& subkey, const wchar_t* name, DWORD number) {
    Set(subkey, name, REG_DWORD, &number, sizeof(number));
  }
  void Set(const std::wstring& subkey, const wchar_t* name, DWORD type, const void* data, std::size_t size) {
    ::RegSetKeyValueW(key_, subkey.c_str(), name, type, data, static_cast<DWORD>(size));
  }

 private:
  const std::wstring path_ = L"Software\\tavira_test_" + std::to_wstring(::GetCurrentProcessId());
  HKEY key_ = nullptr;
};

}  // namespace tavira::test
