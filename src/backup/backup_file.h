#pragma once

#include <cstdint>
#include <string_view>

#include "platform/file_system.h"

namespace tavira {

/**
 * A host file that grows by whole pieces and is closed after each, so that a failure or the end of the
 * process leaves the finished ones as they are. What a failed write has left of its piece is taken back, as
 * far as the system allows. Results: 0, −63, or 4 when the file is past 1 GiB.
 */
class CBackupFile {
 public:
  /** The file is the one that `path` means now, also when the current directory changes. */
  CBackupFile(IFileSystem& files, const WideString& path) : files_(files), path_(files.FullPath(path)) {}

  /** Creates the file or empties it. */
  std::int32_t Create();

  /** Opens the file, adds the bytes at its end, closes it; takes no memory. No bytes: does nothing. */
  std::int32_t Append(std::string_view bytes);

  /** As Append, whatever the file's size: for the trailer that ends every backup. */
  std::int32_t AppendTrailer(std::string_view bytes);

 private:
  std::int32_t Append(std::string_view bytes, std::uint64_t largest_size);
  std::int32_t WriteAtEnd(std::string_view bytes, std::uint64_t largest_size, std::uint64_t& size_before);
  void CutBack(std::uint64_t size);

  IFileSystem& files_;
  const WideString path_;
  std::unique_ptr<IHostFile> file_; /**< what Create made; closed between the pieces */
};

}  // namespace tavira
