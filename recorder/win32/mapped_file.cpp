#include "win32/mapped_file.h"

namespace recorder {

CMappedFile::CMappedFile(const std::filesystem::path& path)
    : file_(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {
  LARGE_INTEGER size{};
  if (file_ == INVALID_HANDLE_VALUE || !GetFileSizeEx(file_, &size)) {
    error_ = GetLastError();
    return;
  }
  if (size.QuadPart == 0) {
    return;  // nothing that could be mapped
  }
  mapping_ = CreateFileMappingW(file_, nullptr, PAGE_READONLY, 0, 0, nullptr);
  view_ = mapping_ == nullptr ? nullptr : MapViewOfFile(mapping_, FILE_MAP_READ, 0, 0, 0);
  error_ = view_ == nullptr ? GetLastError() : 0;
  size_ = view_ == nullptr ? 0 : static_cast<std::size_t>(size.QuadPart);
}

CMappedFile::~CMappedFile() {
  if (view_ != nullptr) {
    UnmapViewOfFile(view_);
  }
  if (mapping_ != nullptr) {
    CloseHandle(mapping_);
  }
  if (file_ != INVALID_HANDLE_VALUE) {
    CloseHandle(file_);
  }
}

}  // namespace recorder
