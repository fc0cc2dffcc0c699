#include <algorithm>
#include <map>

#include "backup_file/stored_download.h"
#include "commands/commands.h"
#include "files/backup_report.h"
#include "files/file_kinds.h"
#include "files/restore_files.h"
#include "files/stored_files.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/record_output.h"
#include "output/setting_cell.h"
#include "output/text_encoding.h"
#include "output/text_layout.h"
#include "printer/answers.h"
#include "printer/manager_session.h"
#include "profile/profile_settings.h"
#include "profile/required_settings.h"
#include "profile/settings_application.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

/** One thing that the backup names and the printer does not show as the backup has it. */
struct tagFinding {
  std::string subject;
  std::optional<std::string> backup;
  std::optional<std::string> printer;
  std::string verdict;
  bool is_open = false; /**< no difference: it could not be compared */
};

struct tagComparison {
  std::vector<tagFinding> findings;
  std::size_t settings = 0; /**< compared */
  std::size_t files = 0;    /**< compared by content */
  std::size_t listed = 0;   /**< compared by name only */
  std::size_t without_value = 0;
  bool is_whole = true; /**< the backup; of one that is not, nobody knows what it would have held */

  bool IsEqual() const { return findings.empty() && settings + files > 0 && is_whole; }
  bool HasDifference() const {
    return std::any_of(findings.begin(), findings.end(), [](const tagFinding& f) { return !f.is_open; });
  }
};

void Describe(const tagGlobalOptions& global, const tagBackupOnHost& backup) {
  if (global.quiet) {
    return;
  }
  std::string names;
  for (const tagBackupFile& file : backup.contents.files) {
    names += (names.empty() ? "  files: " : ", ") + EscapeBytes(file.name);
  }
  WriteError(backup.path + ": " + Summary(backup) + "\n" + names + (names.empty() ? "" : "\n") +
             CoverageSentence() + "\n");
}

void RefuseUnlessWhole(const tagBackupOnHost& backup, bool force) {
  if (backup.bytes->empty()) {
    throw CInputFileError("the file \"" + backup.path + "\" is empty: there is nothing to send");
  }
  if (!backup.contents.IsComplete() && !force) {
    throw CFailure("\"" + backup.path +
                       "\" is not a complete backup; nothing was sent (--force sends it all the same):\n" +
                       ExplainProblems(backup.contents),
                   backup.contents.is_backup ? kExitFailed : kExitInputFile);
  }
}

// The module waits so long for the printer's answer to the file, then saves and loads everything.
std::uint64_t LongestMs(const CManagerSession& session, std::size_t size) {
  constexpr std::uint64_t kMinute = 60'000;
  constexpr std::uint64_t kBytesPerMinute = 20ULL << 20;
  const bool is_long = session.IsNetwork() && size > kBytesPerMinute;
  const std::uint64_t minutes = is_long ? std::min<std::uint64_t>(size / kBytesPerMinute + 1, 50) : 1;
  return minutes * kMinute + 5 * limit::kTransaction + limit::kFullLoad;
}

// What the backup has no value for sets nothing, so nothing can be said of it.
void CompareSettings(const CManagerSession& session, const tagBackupContents& contents,
                     tagComparison& result) {
  const std::map<std::string, std::string> values = SettingsByKey(contents);
  for (const auto& [key, value] : values) {
    const std::optional<tagSettingName> setting = FindSetting(key);
    const std::optional<std::string> got = setting ? session.Value(setting->id) : std::nullopt;
    ++result.settings;
    if (got != value) {
      result.findings.push_back({key, value, got, got ? "differs" : "not answered"});
    }
  }
  for (const tagBackupSetting& setting : contents.settings) {
    result.without_value += values.contains(setting.key) ? 0U : 1U;
  }
}

// `done`: until when the printer is known to have answered.
void CompareFiles(const CManagerSession& session, const std::vector<tagBackupFile>& files,
                  const std::string& done, tagComparison& result) {
  for (const tagBackupFile& file : files) {
    const std::string name = NameOf(file);
    const tagFileKind* const kind = KindOfFile(name);
    if (kind == nullptr || !IsStored(session, *kind, name)) {
      result.findings.push_back({name, std::nullopt, std::nullopt, "not listed"});
      continue;
    }
    const std::optional<std::string> bytes = BytesOfDownload(file.name, file.command);
    const EComparison content = bytes ? CompareStored(session, name, *bytes) : EComparison::kNotCompared;
    if (content == EComparison::kNotCompared) {
      // A silent printer would cost a minute for each of the files.
      RequireStillAnswering(session, done);
      ++result.listed;
      result.findings.push_back({name, std::nullopt, std::nullopt, "listed, content not compared", true});
      continue;
    }
    ++result.files;
    if (content == EComparison::kOther) {
      result.findings.push_back({name, std::nullopt, std::nullopt, "other content"});
    }
  }
}

std::string Verdict(const tagComparison& result) {
  if (result.settings + result.files + result.listed == 0) {
    return "sent; the file names no settings and no files, so there is nothing to compare\n";
  }
  std::string text = result.HasDifference() ? "different; compared: " : "equal: ";
  text += std::to_string(result.settings) + " settings, " + std::to_string(result.files) +
          " files by their content";
  text += result.listed == 0 ? "" : ", " + std::to_string(result.listed) + " files by their name only";
  text += result.without_value == 0
              ? ""
              : "; " + std::to_string(result.without_value) + " settings have no value in the backup";
  text += result.is_whole ? "" : "; the file is not a complete backup";
  return text + "\n";
}

void Print(const tagGlobalOptions& global, const tagComparison& result) {
  if (global.json) {
    Json rows = Json::array();
    for (const tagFinding& finding : result.findings) {
      const auto text = [](const std::optional<std::string>& value) {
        return value ? Json(JsonText(*value)) : Json();
      };
      rows.push_back({{"subject", finding.subject},
                      {"backup", text(finding.backup)},
                      {"printer", text(finding.printer)},
                      {"verdict", finding.verdict}});
    }
    SetJsonResult({{"equal", result.IsEqual()},
                   {"setting_count", result.settings},
                   {"file_count", result.files},
                   {"listed_file_count", result.listed},
                   {"settings_without_value", result.without_value},
                   {"differences", rows}});
    return;
  }
  CRecordOutput output({{"", "WHAT"}, {"", "BACKUP"}, {"", "PRINTER"}, {"", "VERDICT"}});
  for (const tagFinding& finding : result.findings) {
    const auto cell = [](const std::optional<std::string>& value) {
      return value ? ValueCell(value) : tagCell::Null("-");
    };
    output.Add({tagCell::Text(finding.subject), cell(finding.backup), cell(finding.printer),
                tagCell::Verdict(finding.verdict, finding.is_open ? ETone::kOpen : ETone::kBad)});
  }
  output.PrintTable();
  WriteOutput(Verdict(result));
}

// What is to be compared without anything being sent, and the words for it.
int ShowPlan(const tagGlobalOptions& global, const CManagerSession& session,
             const tagBackupContents& contents, const std::vector<tagBackupFile>& files, bool with_settings) {
  session.LoadAll();
  RequireStillAnswering(session, "the printer was read");
  tagComparison result;
  result.is_whole = contents.IsComplete();
  if (with_settings) {
    CompareSettings(session, contents, result);
  }
  CompareFiles(session, files, "the printer was read", result);
  Print(global, result);
  AddJsonMember("dry_run", true);
  return kExitDone;
}

// By the road of "apply": compared, written, proved one by one.
int RestoreSettings(const tagGlobalOptions& global, const tagRestoreOptions& options,
                    const tagBackupContents& contents, const tagPrinterChoice& choice) {
  const CLabels labels(options.labels);
  tagApplication application{{}, Describe(choice), options.yes, options.dry_run, {{"file", options.file}}};
  for (const tagBackupSetting& setting : contents.settings) {
    const std::optional<tagSettingName> known = FindSetting(setting.key);
    const bool is_double =
        std::any_of(application.settings.begin(), application.settings.end(),
                    [&](const tagWantedSetting& other) { return other.key == setting.key; });
    // Only what --force lets through.
    if (known && (is_double || !IsSafeValue(setting.value) || !WhyNotInProfiles(known->id).empty())) {
      throw CFailure("nothing was written: " + setting.key + " stands in the backup as no backup has it");
    }
    const std::string why =
        known && !options.force ? labels.WhyNot(known->id, std::string(setting.value)) : "";
    if (!why.empty() && !setting.value.empty()) {
      throw CFailure("nothing was written: the backup holds \"" + EscapeBytes(setting.value) +
                     "\", which is no value of " + setting.key + ": " + why +
                     " (--force writes it all the same)");
    }
    if (known && !setting.value.empty()) {
      application.settings.push_back({known->id, setting.key, setting.value});
    }
  }
  if (application.settings.empty()) {
    throw CFailure("the backup \"" + options.file + "\" holds no settings");
  }
  NoteNothingSent(labels, application);
  const CManagerSession session(global, choice);
  session.RequireAnsweringPrinter();
  session.LoadAll();
  RequireStillAnswering(session, "the settings were read");
  session.Remark(
      "remark: the prefix characters are no part of --settings (tvmgr prefix); settings without a value in "
      "the "
      "backup stay as they are");
  return ApplySettings(global, session, labels, std::move(application));
}

int RestoreChosenFiles(const tagGlobalOptions& global, const tagRestoreOptions& options,
                       const tagBackupContents& contents, const tagPrinterChoice& choice) {
  const std::vector<tagBackupFile> files = ChooseFiles(contents, options.names);
  std::string names;
  for (const tagBackupFile& file : files) {
    names += (names.empty() ? "" : ", ") + MakeVisible(NameOf(file));
  }
  Confirm("store " + names + " on " + Describe(choice) + ", in the place of files with these names",
          options.yes || options.dry_run);
  const CManagerSession session(global, choice);
  session.RequireAnsweringPrinter();
  if (options.dry_run) {
    return ShowPlan(global, session, contents, files, false);
  }
  session.LoadAll();
  RequireStillAnswering(session, "the lists were read");
  return RestoreFiles(global, session, files);
}

void RequireOwnTable(const tagRestoreOptions& options) {
  if (options.settings) {
    RequireTable({"KEY", "NAME", "NOW", "WANTED", "GOT", "VERDICT", "REASON"}, "with --settings");
  } else if (options.files && !options.dry_run) {
    RequireTable({"NAME", "VERDICT", "REASON"}, "with --files");
  } else {
    RequireTable({"WHAT", "BACKUP", "PRINTER", "VERDICT"},
                 options.files ? "with --files --dry-run" : "without --settings or --files");
  }
}

int RestorePart(const tagGlobalOptions& global, const tagRestoreOptions& options,
                const tagPrinterChoice& choice) {
  const tagBackupOnHost backup = ReadBackup(global, options.file);
  Describe(global, backup);
  RefuseUnlessWhole(backup, options.force);
  return options.settings ? RestoreSettings(global, options, backup.contents, choice)
                          : RestoreChosenFiles(global, options, backup.contents, choice);
}

}  // namespace

int RunRestore(const tagGlobalOptions& global, const tagRestoreOptions& options) {
  RequireOwnTable(options);
  const tagPrinterChoice choice = RequireChoice(global);
  if (options.settings || options.files) {
    return RestorePart(global, options, choice);
  }
  if (!options.labels.empty()) {
    throw CUsageError("--labels belongs to --settings");
  }
  std::size_t size = 0;
  {
    // The module reads the file itself; there need not be two of it in memory.
    const tagBackupOnHost backup = ReadBackup(global, options.file);
    Describe(global, backup);
    RefuseUnlessWhole(backup, options.force);
    size = backup.bytes->size();
    if (options.dry_run) {
      const CManagerSession session(global, choice);
      session.RequireAnsweringPrinter();
      return ShowPlan(global, session, backup.contents, backup.contents.files, true);
    }
  }
  Confirm("replace the settings and files that this backup names on " + Describe(choice), options.yes);
  const CManagerSession session(global, choice);
  session.RequireAnsweringPrinter();
  const std::wstring path = ToWide(options.file);
  ReportTransfer(size);
  session.Require("TVMGR_Restore", "restoring", LongestMs(session, size),
                  [&] { return TVMGR_Restore(path.c_str()); });
  // Silence, and a printer that takes nothing of the file, are no errors of the module. It has loaded
  // everything again, though.
  RequireStillAnswering(session, "the backup was sent");
  tagComparison result;
  {
    const tagBackupOnHost backup = ReadBackup(global, options.file);
    result.is_whole = backup.contents.IsComplete();
    CompareSettings(session, backup.contents, result);
    CompareFiles(session, backup.contents.files, "the backup was sent", result);
  }
  Print(global, result);
  AddJsonMember("dry_run", false);
  if (result.HasDifference()) {
    throw CFailure(
        "sent, but not everything is on the printer as the backup has it (a printer that refuses shows only "
        "so)");
  }
  return result.IsEqual() ? kExitDone : kExitUnproved;
}

}  // namespace tvmgr
