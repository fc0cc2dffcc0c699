#pragma once

#include <cstdint>
#include <vector>

#include "platform/profile_file.h"
#include "platform/text_codec.h"

namespace tavira {

/** The spooler's printers and drivers that count as supported, in the order of their keys. */
struct tagSupportedNames {
  std::vector<WideString> printers;
  std::vector<WideString> drivers;
};

/**
 * Setting.ini in the module's folder: what an installation adds to printer discovery. Only read, and afresh
 * on every use; a missing file is an empty one.
 */
class CModuleSettings {
 public:
  explicit CModuleSettings(IProfileFile& file) : file_(file) {}

  /** Replaces both lists. 0, or −1 when the file has no path; the lists are then left as they were. */
  std::int32_t ReadSupportedNames(tagSupportedNames& names) const;

  /** The service name of one more USB hub driver, up to 63 bytes in the ANSI code page; usually empty. */
  WideString UserHubName(ITextCodec& text) const;

 private:
  WideString ListsPath() const;

  IProfileFile& file_;
};

}  // namespace tavira
