#include "emulator/memory/folder_printer.h"

#include <system_error>
#include <utility>

namespace lxemu {

namespace fs = std::filesystem;

CFolderPrinter::CFolderPrinter(fs::path folder, MillisecondClock now)
    : folder_(std::move(folder)),
      memory_(folder_),
      folder_problem_(memory_.Prepare()),
      is_problem_told_(!folder_problem_.empty()),
      printer_(std::move(now)) {
  ReadIniWhenChanged();
  printer_.State().settings.RestoreFactory();
  printer_.State().settings.Save();
  memory_.Load(printer_);
}

std::string CFolderPrinter::Save() {
  const bool was_told = is_problem_told_;
  is_problem_told_ = !memory_.Save(printer_);
  return is_problem_told_ && !was_told
             ? "the memory folder could not be written: what the printer was told last is not kept"
             : std::string();
}

bool CFolderPrinter::ReadIniWhenChanged() {
  const fs::path path = folder_ / "printer.ini";
  std::error_code error;
  std::optional<fs::file_time_type> time = fs::last_write_time(path, error);
  if (error) {
    time.reset();
  }
  if (is_ini_read_ && time == ini_time_) {
    return false;
  }
  is_ini_read_ = true;
  ini_time_ = time;
  ini_ = ReadPrinterIni(ReadHostFile(path).value_or(std::string()));
  ApplyIni(ini_, printer_);
  return true;
}

}  // namespace lxemu
