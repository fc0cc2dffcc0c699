#include <algorithm>
#include <filesystem>

#include "commands/commands.h"
#include "files/backup_report.h"
#include "files/file_kinds.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/record_output.h"
#include "output/result_words.h"
#include "output/text_encoding.h"
#include "printer/manager_session.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

struct tagSection {
  std::string_view name; /**< empty: known by its letter only */
  char letter;
  std::uint8_t TvmgrBackupInfo::*flag;
  bool is_default;
};

constexpr tagSection kSections[] = {
    {"settings", 'S', &TvmgrBackupInfo::settings, true},
    {"graphics", 'I', &TvmgrBackupInfo::section_i, true},
    {"formats", 'T', &TvmgrBackupInfo::section_t, true},
    {"fonts", 'F', &TvmgrBackupInfo::section_f, true},
    {"background", 'B', &TvmgrBackupInfo::section_b, true},
    {"", 'C', &TvmgrBackupInfo::section_c, false},
    {"", 'P', &TvmgrBackupInfo::section_p, false},
};

void Choose(TvmgrBackupInfo& info, const std::string& word) {
  bool known = !word.empty();
  const auto* const named =
      std::find_if(std::begin(kSections), std::end(kSections), [&](const tagSection& section) {
        return !section.name.empty() && EqualsIgnoreCase(section.name, word);
      });
  if (named != std::end(kSections)) {
    info.*named->flag = 1;
    return;
  }
  for (const char c : UpperAscii(word)) {
    const auto* const section = std::find_if(std::begin(kSections), std::end(kSections),
                                             [c](const tagSection& s) { return s.letter == c; });
    known = known && section != std::end(kSections);
    if (known) {
      info.*section->flag = 1;
    }
  }
  if (!known) {
    throw CUsageError("there is no section \"" + word +
                      "\": settings, graphics, formats, fonts, background, or the letters S I T F B C P");
  }
}

TvmgrBackupInfo ChooseSections(const std::string& list) {
  TvmgrBackupInfo info = {};
  if (list.empty()) {
    for (const tagSection& section : kSections) {
      info.*section.flag = section.is_default ? 1 : 0;
    }
    return info;
  }
  for (std::size_t begin = 0; begin <= list.size();) {
    const std::size_t end = std::min(list.find(',', begin), list.size());
    Choose(info, list.substr(begin, end - begin));
    begin = end + 1;
  }
  return info;
}

void ConfirmOverwriting(const std::string& file, bool agreed) {
  std::error_code ignored;
  if (std::filesystem::exists(ToWide(file), ignored)) {
    Confirm("overwrite the file \"" + file + "\"", agreed);
  }
}

std::uint64_t LongestMs(const CManagerSession& session) {
  std::uint64_t files = 0;
  for (const tagFileKind& kind : AllFileKinds()) {
    files += session.FileNames(kind.list).size();
  }
  return (files + 1) * limit::kTransaction;
}

void WriteBackup(const CManagerSession& session, const tagBackupOptions& options, TvmgrBackupInfo info) {
  const std::wstring path = ToWide(options.file);
  info.path = path.c_str();
  session.Require("TVMGR_UpdateBackupInfo", "preparing the backup", 0,
                  [&] { return TVMGR_UpdateBackupInfo(&info); });
  // Everything has been loaded just now, or is not to be.
  const std::int32_t result =
      session.Call("TVMGR_Backup", "writing the backup", LongestMs(session), [] { return TVMGR_Backup(0); });
  if (result != TVMGR_OK) {
    throw CFailure("the backup is not complete; \"" + options.file +
                       "\" holds what was written before the failure: " + ExplainResult(result),
                   ExitCodeOf(result));
  }
}

}  // namespace

int RunBackup(const tagGlobalOptions& global, const tagBackupOptions& options) {
  if (options.file.empty()) {
    throw CUsageError("name the file to write: tvmgr backup FILE");
  }
  const TvmgrBackupInfo info = ChooseSections(options.sections);
  ConfirmOverwriting(options.file, options.yes);
  {
    const CManagerSession session(global);
    if (!options.no_reload) {
      // Before the file is touched: a printer that turns out to be silent must not cost an earlier backup.
      session.RequireAnsweringPrinter();
      session.LoadAll();
    } else {
      session.Remark(
          "remark: without a load this process knows no values and no files of the printer, so the backup "
          "holds none");
    }
    WriteBackup(session, options, info);
  }
  const tagBackupOnHost backup = ReadBackup(global, options.file);
  if (global.json) {
    PrintJson(SummaryJson(backup));
  } else {
    WriteOutput(backup.path + ": " + Summary(backup) + "\n");
  }
  if (!backup.contents.IsComplete()) {
    throw CFailure("the backup was written, but it is not complete:\n" + ExplainProblems(backup.contents));
  }
  return kExitDone;
}

}  // namespace tvmgr
