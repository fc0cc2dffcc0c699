#pragma once

#include <cstddef>
#include <memory>

#include "platform/wide_string.h"

namespace tavira {

/**
 * Profile files: sections in square brackets, key=value lines. Section and key are ASCII and found in any
 * case. A file, section or key that is missing reads as empty. Files are opened anew for each value.
 */
class IProfileFile {
 public:
  virtual ~IProfileFile() = default;

  /** At most `buffer_size` − 1 characters of the value. */
  virtual WideString ReadWide(const WideString& path, const char* section, const char* key,
                              std::size_t buffer_size) = 0;

  /** The full path of the file that this code was loaded from; empty when the system does not tell it. */
  virtual WideString ModulePath() = 0;
};

/** The profile files of the platform this program was built for. */
std::unique_ptr<IProfileFile> MakeProfileFile();

}  // namespace tavira
