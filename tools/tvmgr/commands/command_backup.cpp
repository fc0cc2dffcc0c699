#include <algorithm>
#include <set>

#include "backup_file/backup_settings.h"
#include "commands/commands.h"
#include "files/backup_progress.h"
#include "files/backup_report.h"
#include "files/file_kinds.h"
#include "files/file_target.h"
#include "files/host_data.h"
#include "output/command_error.h"
#include "output/record_output.h"
#include "output/result_words.h"
#include "output/text_encoding.h"
#include "printer/answers.h"
#include "printer/manager_session.h"
#include "profile/required_settings.h"
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

std::size_t ListedFiles(const CManagerSession& session) {
  std::size_t files = 0;
  for (const tagFileKind& kind : AllFileKinds()) {
    files += session.FileNames(kind.list).size();
  }
  return files;
}

/** What the printer did not deliver, and what does not stand in the file as it was loaded. */
struct tagShortfall {
  std::string lines; /**< one for each, indented */
  bool is_damage = false;
};

void JudgeSettings(const CManagerSession& session, const tagBackupContents& contents,
                   tagShortfall& shortfall) {
  const std::map<std::string, std::string> values = SettingsByKey(contents);
  std::string unanswered;
  bool is_prefix = false;  // the three stand in the file together or, as the check has said, not at all
  const auto judge = [&](std::string_view key) {
    const std::optional<std::string> loaded = session.Value(RequireSetting(key).id);
    const auto found = values.find(std::string(key));
    if (!loaded || loaded->empty()) {
      unanswered += " " + std::string(key);
    } else if (found == values.end() ? !is_prefix : !EqualsIgnoreCase(found->second, *loaded)) {
      shortfall.lines += "  " + std::string(key) + " is not in the file as the printer said it\n";
      shortfall.is_damage = true;
    }
  };
  std::for_each(kBackupSettings.begin(), kBackupSettings.end(), judge);
  is_prefix = true;
  std::for_each(kPrefixSettings.begin(), kPrefixSettings.end(), judge);
  if (!unanswered.empty()) {
    shortfall.lines += "  the printer gave no value for" + unanswered + "\n";
  }
}

void JudgeFiles(const CManagerSession& session, const tagBackupContents& contents, tagShortfall& shortfall) {
  std::set<std::string> names;
  for (const tagBackupFile& file : contents.files) {
    names.insert(FromAnsi(file.name).value_or(EscapeBytes(file.name)));
  }
  for (const tagFileKind& kind : AllFileKinds()) {
    const char section = SectionOfFile(kind.extension);
    const bool is_wanted = section != 0 && contents.sections.find(section) != std::string::npos;
    for (const std::string& name : is_wanted ? session.FileNames(kind.list) : std::vector<std::string>()) {
      if (!names.contains(name)) {
        shortfall.lines += "  the printer lists " + name + ", but sent nothing for it\n";
      }
    }
  }
}

tagShortfall Compare(const CManagerSession& session, const tagBackupContents& contents, bool with_settings) {
  tagShortfall shortfall{ExplainProblems(contents), !contents.IsUndamaged()};
  if (with_settings) {
    JudgeSettings(session, contents, shortfall);
  }
  JudgeFiles(session, contents, shortfall);
  if (shortfall.lines.empty() && IsAnswerCut(session)) {
    shortfall.lines = "  the printer's answers were cut off, so its lists may be, too\n";
  }
  return shortfall;
}

void WriteBackup(const CManagerSession& session, const CFileTarget& target, TvmgrBackupInfo info) {
  const std::wstring path = ToWide(target.Partial());
  info.path = path.c_str();
  session.Require("TVMGR_UpdateBackupInfo", "preparing the backup", 0,
                  [&] { return TVMGR_UpdateBackupInfo(&info); });
  // Everything has been loaded just now.
  const std::size_t files = ListedFiles(session);
  CBackupProgress progress(target.Partial(), files);
  const std::int32_t result = session.Call(
      "TVMGR_Backup", "writing the backup", (files + 1) * limit::kTransaction, [] { return TVMGR_Backup(0); },
      [&](std::uint64_t) { return progress.Now(); });
  if (result != TVMGR_OK) {
    throw CallFailure(
        "the backup is not complete; \"" + target.Partial() + "\" holds what was written before the failure",
        "writing the backup", result);
  }
}

void Print(const tagGlobalOptions& global, const tagBackupOnHost& backup) {
  if (global.json) {
    SetJsonResult(SummaryJson(backup));
  } else {
    WriteOutput(backup.path + ": " + Summary(backup) + "\n");
  }
}

}  // namespace

int RunBackup(const tagGlobalOptions& global, const tagBackupOptions& options) {
  if (options.file.empty()) {
    throw CUsageError("name the file to write: tvmgr backup FILE");
  }
  const TvmgrBackupInfo info = ChooseSections(options.sections);
  ConfirmOverwriting(options.file, options.yes);
  CFileTarget target(options.file, "the backup");
  const CManagerSession session(global);
  session.RequireAnsweringPrinter();
  session.LoadAll();
  WriteBackup(session, target, info);
  tagBackupOnHost backup = ReadBackup(global, target.Partial());
  const tagShortfall shortfall = Compare(session, backup.contents, info.settings != 0);
  const bool is_silent = session.Status() == TVMGR_STATUS_UNKNOWN;
  if (!shortfall.lines.empty() || is_silent) {
    Print(global, backup);
    throw CFailure("the backup is not complete; \"" + target.Partial() + "\" holds what there is" +
                       (is_silent ? ", and the printer no longer answers" : "") + ":\n" + shortfall.lines,
                   is_silent             ? kExitUnreachable
                   : shortfall.is_damage ? kExitFailed
                                         : kExitUnproved);
  }
  target.Commit();
  backup.path = options.file;
  Print(global, backup);
  return kExitDone;
}

}  // namespace tvmgr
