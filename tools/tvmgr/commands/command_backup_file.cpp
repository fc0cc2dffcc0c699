// What needs a backup file only: no printer, no manager.
#include "backup_file/backup_difference.h"
#include "backup_file/backup_settings.h"
#include "backup_file/stored_download.h"
#include "commands/commands.h"
#include "files/backup_report.h"
#include "names/setting_names.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/record_output.h"
#include "output/setting_cell.h"
#include "output/text_encoding.h"

namespace tvmgr {
namespace {

bool IsChanged(const tagBackupContents& contents) {
  return contents.prefix && *contents.prefix != tagBackupPrefix{};
}

std::string ShownPrefix(const tagBackupPrefix& prefix) {
  std::string text;
  for (const char c : {prefix.control, prefix.format, prefix.delimiter}) {
    text += (text.empty() ? "" : " ") + EscapeBytes({&c, 1});
  }
  return text;
}

void PrintContents(const tagBackupContents& contents) {
  CRecordOutput settings({{"", "SETTING"}, {"", "VALUE"}});
  for (const tagBackupSetting& setting : contents.settings) {
    settings.Add({tagCell::Text(setting.key), ValueCell(setting.value)});
  }
  CRecordOutput files({{"", "FILE"}, {"", "SECTION"}, {"", "STORED"}, {"", "IN BACKUP"}, {"", "PROTECTED"}});
  for (const tagBackupFile& file : contents.files) {
    const std::optional<std::uint64_t> stored = ReadStoredDownload(file.name, file.command).stored_bytes;
    const char section = SectionOfFile(file.name);
    files.Add({tagCell::Text(EscapeBytes(file.name)),
               tagCell::Text(section == 0 ? std::string("-") : std::string(1, section)),
               stored ? tagCell::Text(std::to_string(*stored)) : tagCell::Null("-"),
               tagCell::Number(static_cast<std::int64_t>(file.command.size())),
               tagCell::Text(file.is_protected ? "yes" : "no")});
  }
  WriteOutput(settings.IsEmpty() ? "" : "\n");
  settings.PrintTable();
  if (IsChanged(contents)) {
    WriteOutput("\nprefix characters " + ShownPrefix(*contents.prefix) + "\n");
  }
  WriteOutput(files.IsEmpty() ? "" : "\n");
  files.PrintTable();
}

Json ContentsJson(const tagBackupOnHost& backup) {
  const tagBackupContents& contents = backup.contents;
  Json json = SummaryJson(backup);
  json["settings"] = Json::array();
  for (const tagBackupSetting& setting : contents.settings) {
    json["settings"].push_back({{"key", setting.key},
                                {"value", JsonText(setting.value)},
                                {"hex", IsPlainAscii(setting.value) ? Json() : Json(ToHex(setting.value))}});
  }
  json["prefix"] = nullptr;
  if (IsChanged(contents)) {
    const auto text = [](char c) { return JsonText({&c, 1}); };
    json["prefix"] = {{"control", text(contents.prefix->control)},
                      {"format", text(contents.prefix->format)},
                      {"delimiter", text(contents.prefix->delimiter)}};
  }
  json["files"] = Json::array();
  for (const tagBackupFile& file : contents.files) {
    const std::optional<std::uint64_t> stored = ReadStoredDownload(file.name, file.command).stored_bytes;
    const char section = SectionOfFile(file.name);
    json["files"].push_back({{"name", JsonText(file.name)},
                             {"section", section == 0 ? Json() : Json(std::string(1, section))},
                             {"stored_bytes", stored ? Json(*stored) : Json()},
                             {"backup_bytes", file.command.size()},
                             {"protected", file.is_protected}});
  }
  return json;
}

std::string FileDifference(const tagFileDifference& pair) {
  if (pair.first == nullptr || pair.second == nullptr) {
    return pair.first == nullptr ? "only in B" : "only in A";
  }
  const bool bytes = pair.first->command != pair.second->command;
  const bool attribute = pair.first->is_protected != pair.second->is_protected;
  return bytes && attribute ? "other bytes, other attribute" : bytes ? "other bytes" : "other attribute";
}

tagCell DifferingValue(const std::optional<std::string>& value) {
  return value ? ValueCell(value) : tagCell::Null("-");
}

void PrintDifference(const tagBackupDifference& difference) {
  CRecordOutput settings({{"", "SETTING"}, {"", "A"}, {"", "B"}});
  for (const tagSettingDifference& setting : difference.settings) {
    settings.Add({tagCell::Text(setting.key), DifferingValue(setting.first), DifferingValue(setting.second)});
  }
  CRecordOutput files({{"", "FILE"}, {"", "DIFFERENCE"}});
  for (const tagFileDifference& pair : difference.files) {
    const tagBackupFile& file = pair.first != nullptr ? *pair.first : *pair.second;
    files.Add({tagCell::Text(EscapeBytes(file.name)), tagCell::Text(FileDifference(pair))});
  }
  settings.PrintTable();
  files.PrintTable();
  WriteOutput(difference.other_sections ? "the headers name other sections\n" : "");
}

Json DifferenceJson(const tagBackupDifference& difference) {
  const auto text = [](const std::optional<std::string>& value) {
    return value ? Json(JsonText(*value)) : Json();
  };
  const auto size = [](const tagBackupFile* file) {
    return file != nullptr ? Json(file->command.size()) : Json();
  };
  Json settings = Json::array();
  for (const tagSettingDifference& setting : difference.settings) {
    settings.push_back({{"key", setting.key}, {"a", text(setting.first)}, {"b", text(setting.second)}});
  }
  Json files = Json::array();
  for (const tagFileDifference& pair : difference.files) {
    const tagBackupFile& file = pair.first != nullptr ? *pair.first : *pair.second;
    files.push_back({{"name", JsonText(file.name)},
                     {"difference", FileDifference(pair)},
                     {"a_bytes", size(pair.first)},
                     {"b_bytes", size(pair.second)}});
  }
  return {{"other_sections", difference.other_sections}, {"settings", settings}, {"files", files}};
}

tagBackupOnHost ReadToCompare(const tagGlobalOptions& global, const std::string& path) {
  tagBackupOnHost backup = ReadBackup(global, path);
  if (!backup.contents.is_backup) {
    throw CInputFileError("\"" + path + "\" is no backup file");
  }
  return backup;
}

}  // namespace

int RunBackupCheck(const tagGlobalOptions& global, const tagBackupCheckOptions& options) {
  const tagBackupOnHost backup = ReadBackup(global, options.file);
  if (global.json) {
    SetJsonResult(ContentsJson(backup));
  } else {
    WriteOutput(backup.path + ": " + Summary(backup) + "\n" + ExplainProblems(backup.contents));
    PrintContents(backup.contents);
    if (!global.quiet) {
      WriteOutput("\n" + std::string(kNotSeenByChecks) + "\n" + CoverageSentence() + "\n");
    }
  }
  return backup.contents.IsComplete() ? kExitDone : backup.contents.is_backup ? kExitFailed : kExitInputFile;
}

int RunBackupCoverage(const tagGlobalOptions& global) {
  CRecordOutput output({{"id", "ID"}, {"key", "KEY"}, {"in_backups", "IN BACKUPS"}});
  for (const tagSettingName& setting : AllSettings()) {
    const bool is_covered = IsInBackups(setting.key);
    output.Add({tagCell::Number(setting.id),
                tagCell::Text(std::string(setting.key)),
                {is_covered ? "yes" : "no", is_covered}});
  }
  if (global.json) {
    output.SetAsJson("settings");
    return kExitDone;
  }
  output.PrintTable();
  WriteOutput("\n" + CoverageSentence() + "\n");
  return kExitDone;
}

int RunBackupDiff(const tagGlobalOptions& global, const tagBackupDiffOptions& options) {
  const tagBackupOnHost first = ReadToCompare(global, options.first);
  const tagBackupOnHost second = ReadToCompare(global, options.second);
  const tagBackupDifference difference = CompareBackups(first.contents, second.contents);
  // Of a file that is not whole nobody knows what it would have held.
  const bool whole = first.contents.IsComplete() && second.contents.IsComplete();
  const bool equal = difference.IsEmpty() && whole;
  if (global.json) {
    Json json = {{"equal", equal}, {"a", SummaryJson(first)}, {"b", SummaryJson(second)}};
    json.update(DifferenceJson(difference));
    SetJsonResult(std::move(json));
  } else {
    WriteOutput("A " + first.path + ": " + Summary(first) + "\nB " + second.path + ": " + Summary(second) +
                "\n");
    PrintDifference(difference);
    WriteOutput((equal ? ShownVerdict("equal", ETone::kGood)
                 : difference.IsEmpty()
                     ? ShownVerdict("not known to be equal", ETone::kOpen) + ": a file is not complete"
                     : ShownVerdict("different", ETone::kBad)) +
                "\n");
    WriteOutput(global.quiet ? std::string() : CoverageSentence() + "\n");
  }
  return equal ? kExitDone : whole ? kExitFailed : kExitUnproved;
}

}  // namespace tvmgr
