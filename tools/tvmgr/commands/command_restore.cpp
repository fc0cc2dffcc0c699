#include <algorithm>

#include "commands/commands.h"
#include "files/backup_report.h"
#include "files/file_kinds.h"
#include "files/stored_files.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/record_output.h"
#include "output/setting_cell.h"
#include "output/settings_names.h"
#include "output/text_encoding.h"
#include "printer/manager_session.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

/** What is to be found on the printer afterwards; outlives the file's bytes, which may be many. */
struct tagExpected {
  std::map<std::string, std::string> values; /**< by key */
  std::vector<std::string> files;            /**< names, UTF-8 */
  std::size_t size = 0;                      /**< of the backup, in bytes */
};

/** One thing that the backup names, as it was found on the printer. */
struct tagFinding {
  std::string subject;
  std::optional<std::string> backup;
  std::optional<std::string> printer;
  std::string verdict;
};

void Describe(const tagGlobalOptions& global, const tagBackupOnHost& backup) {
  if (global.quiet) {
    return;
  }
  std::string names;
  for (const tagBackupFile& file : backup.contents.files) {
    names += (names.empty() ? "  files: " : ", ") + EscapeBytes(file.name);
  }
  WriteError(backup.path + ": " + Summary(backup) + "\n" + names + (names.empty() ? "" : "\n"));
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

tagExpected ExpectFrom(const tagBackupOnHost& backup) {
  tagExpected expected{SettingsByKey(backup.contents), {}, backup.bytes->size()};
  for (const tagBackupFile& file : backup.contents.files) {
    expected.files.push_back(FromAnsi(file.name).value_or(EscapeBytes(file.name)));
  }
  return expected;
}

// The module waits so long for the printer's answer to the file, then saves and loads everything.
std::uint64_t LongestMs(const CManagerSession& session, std::size_t size) {
  constexpr std::uint64_t kMinute = 60'000;
  constexpr std::uint64_t kBytesPerMinute = 20ULL << 20;
  const bool is_long = session.IsNetwork() && size > kBytesPerMinute;
  const std::uint64_t minutes = is_long ? std::min<std::uint64_t>(size / kBytesPerMinute + 1, 50) : 1;
  return minutes * kMinute + 5 * limit::kTransaction + limit::kFullLoad;
}

// What the backup has no value for was not sent, so nothing can be said of it.
std::vector<tagFinding> FindDifferences(const CManagerSession& session, const tagExpected& expected) {
  std::vector<tagFinding> findings;
  for (const auto& [key, value] : expected.values) {
    const std::optional<tagSettingName> setting = FindSetting(key);
    const std::optional<std::string> got = setting ? session.Value(setting->id) : std::nullopt;
    if (!value.empty() && got != value) {
      findings.push_back({key, value, got, got ? "differs" : "not answered"});
    }
  }
  for (const std::string& name : expected.files) {
    const tagFileKind* const kind = KindOfFile(name);
    if (kind == nullptr || !IsStored(session, *kind, name)) {
      findings.push_back({name, std::nullopt, std::nullopt, "not listed"});
    }
  }
  return findings;
}

void Print(const tagGlobalOptions& global, const tagExpected& expected,
           const std::vector<tagFinding>& findings) {
  if (global.json) {
    Json rows = Json::array();
    for (const tagFinding& finding : findings) {
      const auto text = [](const std::optional<std::string>& value) {
        return value ? Json(JsonText(*value)) : Json();
      };
      rows.push_back({{"subject", finding.subject},
                      {"backup", text(finding.backup)},
                      {"printer", text(finding.printer)},
                      {"verdict", finding.verdict}});
    }
    PrintJson({{"equal", findings.empty()},
               {"setting_count", expected.values.size()},
               {"file_count", expected.files.size()},
               {"differences", rows}});
    return;
  }
  CRecordOutput output({{"", "WHAT"}, {"", "BACKUP"}, {"", "PRINTER"}, {"", "VERDICT"}});
  for (const tagFinding& finding : findings) {
    const auto cell = [](const std::optional<std::string>& value) {
      return value ? ValueCell(value) : tagCell::Null("-");
    };
    output.Add({tagCell::Text(finding.subject), cell(finding.backup), cell(finding.printer),
                tagCell::Text(finding.verdict)});
  }
  output.PrintTable();
  if (expected.values.empty() && expected.files.empty()) {
    WriteOutput("sent; the file names no settings and no files, so there is nothing to compare\n");
  } else if (findings.empty()) {
    WriteOutput("equal: " + std::to_string(expected.values.size()) + " settings, and the printer lists all " +
                std::to_string(expected.files.size()) + " files\n");
  }
}

}  // namespace

int RunRestore(const tagGlobalOptions& global, const tagRestoreOptions& options) {
  tagExpected expected;
  {
    // The module reads the file itself; there need not be two of it in memory.
    const tagBackupOnHost backup = ReadBackup(global, options.file);
    Describe(global, backup);
    RefuseUnlessWhole(backup, options.force);
    expected = ExpectFrom(backup);
  }
  Confirm("replace the settings and files that this backup names on " + Describe(ChoiceInForce(global)),
          options.yes);
  const CManagerSession session(global);
  session.RequireAnsweringPrinter();
  const std::wstring path = ToWide(options.file);
  session.Require("TVMGR_Restore", "restoring", LongestMs(session, expected.size),
                  [&] { return TVMGR_Restore(path.c_str()); });
  // Silence, and a printer that takes nothing of the file, are no errors of the module. It has loaded
  // everything again, though.
  const std::vector<tagFinding> findings = FindDifferences(session, expected);
  Print(global, expected, findings);
  if (!findings.empty()) {
    throw CFailure("sent, but " + std::to_string(findings.size()) +
                   " of the backup's settings and files are not on the printer as the backup has them (a "
                   "printer that stays silent or refuses shows only so)");
  }
  return kExitDone;
}

}  // namespace tvmgr
