#include "backup/backup_file.h"

#include <limits>

namespace tavira {
namespace {

constexpr std::uint64_t kLargestSize = 0x40000000;

}  // namespace

std::int32_t CBackupFile::Create() {
  const auto file = files_.Create(path_);
  return file != nullptr && file->Close() ? TVMGR_OK : TVMGR_FILE_ERROR;
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
  const auto file = files_.OpenForWriting(path_);
  std::uint64_t size = 0;
  if (file == nullptr || !file->SeekToEnd(size)) {
    return TVMGR_FILE_ERROR;
  }
  if (size > largest_size) {
    return TVMGR_FILE_TOO_LARGE;
  }
  const bool written = file->Write(bytes);
  if (!written) {
    file->Truncate(size);
  }
  const bool closed = file->Close();
  if (!closed) {
    CutBack(size);
  }
  return written && closed ? TVMGR_OK : TVMGR_FILE_ERROR;
}

// A close that fails tells of bytes that were taken before and are lost now.
void CBackupFile::CutBack(std::uint64_t size) {
  if (const auto file = files_.OpenForWriting(path_)) {
    file->Truncate(size);
  }
}

}  // namespace tavira
