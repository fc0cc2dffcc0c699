#pragma once

#include <cstdint>
#include <string>

#include "emulator/files/file_store.h"
#include "emulator/printer/printer_status.h"
#include "emulator/printer/quirks.h"
#include "emulator/printer/setting_memory.h"

namespace lxemu {

/// How many commands of the streams were of which kind, since the printer was made. What the printer
/// disregards is only seen here, so a host developer looks here first.
struct tagCommandCounts {
  std::uint64_t understood = 0;  ///< known commands, carried out or not
  std::uint64_t unknown = 0;     ///< prefix bytes without a command that the printer knows
  std::uint64_t malformed = 0;   ///< known commands with parameters that make no sense
  std::uint64_t refused = 0;  ///< wrong checksum, protected file, read-only or refused setting, memory full
  std::uint64_t outside_format = 0;  ///< format commands that did not stand between ^XA and ^XZ
};

/// Everything that one printer is, shared between its front (CPrinter) and the command interpreter.
struct tagPrinterState {
  explicit tagPrinterState(MillisecondClock now) : status(std::move(now)) {}

  std::string StatusText() const { return quirks.off_line ? "OF" : status.Text(); }

  CSettingMemory settings;
  CFileStore files;
  CPrinterStatus status;
  tagQuirks quirks;
  tagCommandCounts counts;
  std::string clock_text;
};

}  // namespace lxemu
