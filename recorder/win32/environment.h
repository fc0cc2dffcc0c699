#pragma once

#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace recorder {

/// An environment variable as Windows has it now; empty when it is not set.
std::wstring Environment(const wchar_t* name);

/// A path that stays the same when the host changes its working folder; of nothing, nothing.
std::filesystem::path FullPath(const std::wstring& path);

/// The file of a module of this process; null: the host program.
std::filesystem::path ModuleFile(HMODULE module_or_null);

/// UTF-8, with something in place of what is no proper UTF-16.
std::string Utf8(const std::wstring& text);

/// The calling thread's last error: a recorder must leave to the host what the library left there.
class CKeptError {
 public:
  CKeptError() : error_(GetLastError()) {}
  ~CKeptError() { SetLastError(error_); }
  CKeptError(const CKeptError&) = delete;
  CKeptError& operator=(const CKeptError&) = delete;

 private:
  DWORD error_;
};

}  // namespace recorder
