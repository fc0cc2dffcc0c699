#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "backup_file/backup_difference.h"
#include "backup_file/backup_parser.h"

namespace {

void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

/** The one file that has these contents and is whole. */
std::string Compose(const tvmgr::tagBackupContents& contents) {
  std::string bytes = "^FXLX-R4100SeriesTavira^FS\r\n^FX" + contents.time_stamp + "^FS\r\n^FX" +
                      contents.sections + "^FS\r\n";
  if (contents.sections.find('S') != std::string::npos) {
    bytes += "^FX^FS\r\n";
    for (const tvmgr::tagBackupSetting& setting : contents.settings) {
      bytes += "^XA^S(" + setting.key + "," + setting.value + "^XZ\r\n";
    }
    if (contents.prefix) {
      bytes += std::string(
                   "\x02\x1E"
                   "CT") +
               contents.prefix->control +
               "\x1E"
               "CC" +
               contents.prefix->format +
               "\x1E"
               "CD" +
               contents.prefix->delimiter + "\x03";
    }
    bytes += "^XA^JUS^XZ\r\n";
  }
  for (const tvmgr::tagBackupFile& file : contents.files) {
    const std::string name(file.name);
    bytes += "^FX^FS\r\n^XA^F(AE:" + name + ",N^XZ\r\n";
    bytes += file.command;
    bytes += "\r\n^XA^F(AE:" + name + (file.is_protected ? ",Y" : ",N") + "^XZ\r\n";
  }
  return bytes + "^XA^H(E^XZ\r\n";
}

void CheckProblems(const tvmgr::tagBackupContents& contents, std::size_t size) {
  Require(contents.problems.size() <= contents.problem_count);
  Require(contents.problems.empty() == contents.IsComplete());
  for (const tvmgr::tagBackupProblem& problem : contents.problems) {
    Require(problem.offset <= size && !problem.text.empty());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const tvmgr::tagBackupContents contents = tvmgr::ParseBackup(bytes);
  CheckProblems(contents, size);
  for (const tvmgr::tagBackupFile& file : contents.files) {
    Require(file.name.data() >= bytes.data() && file.command.data() >= file.name.data());
    Require(file.command.data() + file.command.size() <= bytes.data() + size);
  }
  Require(tvmgr::CompareBackups(contents, contents).IsEmpty());
  if (contents.IsComplete()) {
    // Nothing was overlooked and nothing was read into it.
    Require(Compose(contents) == bytes);
    // A cut takes the trailer away, so it cannot go unnoticed.
    Require(!tvmgr::ParseBackup(bytes.substr(0, size - 1)).IsComplete());
  }
  return 0;
}
