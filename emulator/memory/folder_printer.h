#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "emulator/memory/memory_folder.h"
#include "emulator/memory/printer_ini.h"
#include "emulator/printer/printer.h"

namespace lxemu {

/// A printer whose memory is a folder and whose behaviour is the printer.ini in it. Making one is a power-on.
class CFolderPrinter {
 public:
  CFolderPrinter(std::filesystem::path folder, MillisecondClock now);

  /// Reads printer.ini again when the file was changed, came or went. True, and the printer behaves as it
  /// says, when it was read; whoever uses the faults of Ini() starts them anew then.
  bool ReadIniWhenChanged();
  /// As it was last read, by the constructor first.
  const tagPrinterIni& Ini() const { return ini_; }

  /// What was wrong with the folder at the start; empty: nothing.
  const std::string& FolderProblem() const { return folder_problem_; }

  CPrinter& Printer() { return printer_; }
  /// Writes what became different since the last call. Empty, or what is wrong: told once, until it has worked again.
  std::string Save();

 private:
  std::filesystem::path folder_;
  CMemoryFolder memory_;
  std::string folder_problem_;
  bool is_problem_told_;
  CPrinter printer_;
  tagPrinterIni ini_;
  bool is_ini_read_ = false;
  std::optional<std::filesystem::file_time_type> ini_time_;
};

}  // namespace lxemu
