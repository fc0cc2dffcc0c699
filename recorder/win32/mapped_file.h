#pragma once

#include <windows.h>

#include <filesystem>
#include <string_view>

namespace recorder {

/// The bytes of a file, without a copy in memory.
class CMappedFile {
 public:
  explicit CMappedFile(const std::filesystem::path& path);
  ~CMappedFile();
  CMappedFile(const CMappedFile&) = delete;
  CMappedFile& operator=(const CMappedFile&) = delete;

  /// 0, or the Windows error that kept the file from being read.
  DWORD Error() const { return error_; }
  std::string_view Bytes() const { return {static_cast<const char*>(view_), size_}; }

 private:
  HANDLE file_;
  HANDLE mapping_ = nullptr;
  const void* view_ = nullptr;
  std::size_t size_ = 0;
  DWORD error_ = 0;
};

}  // namespace recorder
