#include "backup/backup_file.h"

#include <limits>

namespace tavira {
namespace {

constexpr std::uint64_t kLargestSize = 0x40000000;

}  // namespace

std::int32_t CBackupFile::Create() {
  file_ = files_.Create(path_);
  return file_ != nullptr && file_->Close() ? TVMGR_OK : TVMGR_FILE_ERROR;
}

std::int32_t CBackupFile::Append(std::string_view bytes) {
  return Append(bytes, kLargestSize);
}

std::int32_t CBackupFile::AppendTrailer(std::string_view bytes) {
  return Append(bytes, std::numeric_limits<std::uint64_t>::max());
}

std::int32_t CBackupFile::Append(std::string_view bytes, std::uint64_t largest_size) {
  if (bytes.empty()) {
    return TVMGR_OK;
  }
  if (file_ == nullptr || !file_->Reopen()) {
    return TVMGR_FILE_ERROR;
  }
  std::uint64_t size_before = 0;
  const std::int32_t result = WriteAtEnd(bytes, largest_size, size_before);
  if (!file_->Close() && result == TVMGR_OK) {
    CutBack(size_before);
    return TVMGR_FILE_ERROR;
  }
  return result;
}

std::int32_t CBackupFile::WriteAtEnd(std::string_view bytes, std::uint64_t largest_size,
                                     std::uint64_t& size_before) {
  if (!file_->SeekToEnd(size_before)) {
    return TVMGR_FILE_ERROR;
  }
  if (size_before > largest_size) {
    return TVMGR_FILE_TOO_LARGE;
  }
  if (!file_->Write(bytes)) {
    file_->Truncate(size_before);
    return TVMGR_FILE_ERROR;
  }
  return TVMGR_OK;
}

// A close that fails tells of bytes that were taken before and are lost now.
void CBackupFile::CutBack(std::uint64_t size) {
  if (file_->Reopen()) {
    file_->Truncate(size);
    file_->Close();
  }
}

}  // namespace tavira
