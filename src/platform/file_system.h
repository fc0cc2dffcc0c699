#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "platform/wide_string.h"

namespace tavira {

/**
 * One open file of the host, unbuffered: each operation is one call to the system, so that what a piecewise
 * writer has finished survives the end of the process. Closed at the end of its life at the latest.
 */
class IHostFile {
 public:
  virtual ~IHostFile() = default;

  /** `size` receives the file's length in bytes; the position is then its end. */
  virtual bool SeekToEnd(std::uint64_t& size) = 0;

  /** `size` receives the file's length in bytes; the position stays. */
  virtual bool GetSize(std::uint64_t& size) = 0;

  /** Writes all bytes at the position, or fails. */
  virtual bool Write(std::string_view bytes) = 0;

  /** Cuts the file to its first `size` bytes. */
  virtual bool Truncate(std::uint64_t size) = 0;

  /** Fills `buffer` from the position; `got` receives the bytes read, fewer only at the file's end. */
  virtual bool Read(std::span<char> buffer, std::size_t& got) = 0;

  virtual bool Close() = 0;

  /** After Close: opens the file that it was again, as it is, for reading and writing. Takes no memory. */
  virtual bool Reopen() = 0;
};

/** Files of the host, by the paths that FullPath gives. What is no file on a disk cannot be opened. */
class IFileSystem {
 public:
  virtual ~IFileSystem() = default;

  /**
   * What a host's path means now, as a path that goes on meaning it, whatever becomes of the current
   * directory, and at any length. Empty when the system cannot say.
   */
  virtual WideString FullPath(const WideString& path) = 0;

  /** Creates the file or empties it; open for writing. Null when that fails. */
  virtual std::unique_ptr<IHostFile> Create(const WideString& path) = 0;

  /** Opens an existing file for reading. Null when that fails. */
  virtual std::unique_ptr<IHostFile> OpenForReading(const WideString& path) = 0;
};

/** The file system of the platform this program was built for. */
std::unique_ptr<IFileSystem> MakeFileSystem();

}  // namespace tavira
