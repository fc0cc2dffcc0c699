#include "files/backup_report.h"

#include <algorithm>

#include "backup_file/backup_parser.h"
#include "backup_file/backup_settings.h"
#include "files/host_data.h"
#include "output/progress.h"
#include "output/text_encoding.h"

namespace tvmgr {
namespace {

std::string Counted(std::size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

// Those with a value: a setting command without one sets nothing.
std::size_t SettingCount(const tagBackupContents& contents) {
  return static_cast<std::size_t>(
      std::count_if(contents.settings.begin(), contents.settings.end(),
                    [](const tagBackupSetting& setting) { return !setting.value.empty(); }));
}

}  // namespace

tagBackupOnHost ReadBackup(const tagGlobalOptions& global, const std::string& path) {
  const CProgress progress("reading " + path, 0, !global.quiet);
  tagBackupOnHost backup{path, std::make_unique<std::string>(ReadHostFile(path)), {}};
  backup.contents = ParseBackup(*backup.bytes);
  return backup;
}

std::string Summary(const tagBackupOnHost& backup) {
  const tagBackupContents& contents = backup.contents;
  const std::string bytes = Counted(backup.bytes->size(), "byte");
  if (!contents.is_backup) {
    return "no backup file, " + bytes;
  }
  const std::string time = ReadableTime(contents.time_stamp);
  return std::string(contents.IsComplete() ? "complete" : "NOT complete") + ", made " +
         (time.empty() ? "at an unknown time" : time) + ", sections " +
         (contents.sections.empty() ? "unknown" : contents.sections) + ", " +
         Counted(SettingCount(contents), "setting") + ", " + Counted(contents.files.size(), "file") + ", " +
         bytes;
}

std::string Explain(const tagBackupProblem& problem) {
  return "at byte " + std::to_string(problem.offset) + ": " +
         (problem.subject.empty() ? "" : EscapeBytes(problem.subject) + ": ") + problem.text;
}

std::string ExplainProblems(const tagBackupContents& contents) {
  std::string text;
  for (const tagBackupProblem& problem : contents.problems) {
    text += "  " + Explain(problem) + "\n";
  }
  if (contents.problem_count > contents.problems.size()) {
    text += "  and " + std::to_string(contents.problem_count - contents.problems.size()) + " more\n";
  }
  return text;
}

std::string CoverageSentence() {
  const std::size_t with_prefix = kBackupSettings.size() + kPrefixSettings.size();
  return "A backup holds " + std::to_string(kBackupSettings.size()) + " of the printer's " +
         std::to_string(kReadableSettings) + " settings, " + std::to_string(with_prefix) +
         " with the prefix characters; \"tvmgr backup coverage\" lists the others.";
}

Json SummaryJson(const tagBackupOnHost& backup) {
  const tagBackupContents& contents = backup.contents;
  Json problems = Json::array();
  for (const tagBackupProblem& problem : contents.problems) {
    problems.push_back({{"offset", problem.offset},
                        {"subject", TextOrNull(JsonText(problem.subject))},
                        {"text", problem.text},
                        {"damage", !problem.is_gap}});
  }
  return {{"file", backup.path},
          {"is_backup", contents.is_backup},
          {"complete", contents.IsComplete()},
          {"time", TextOrNull(ReadableTime(contents.time_stamp))},
          {"sections", TextOrNull(contents.sections)},
          {"setting_count", SettingCount(contents)},
          {"settings_of_printer", kReadableSettings},
          {"file_count", contents.files.size()},
          {"bytes", backup.bytes->size()},
          {"problem_count", contents.problem_count},
          {"problems", problems}};
}

std::string JsonText(std::string_view bytes) {
  return FromAnsi(bytes).value_or(EscapeBytes(bytes));
}

}  // namespace tvmgr
