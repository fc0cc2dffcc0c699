#include "backup_file/backup_parser.h"
#include "commands/commands.h"
#include "files/backup_report.h"
#include "files/host_data.h"
#include "output/command_error.h"
#include "output/record_output.h"
#include "output/setting_cell.h"
#include "output/text_encoding.h"
#include "printer/answers.h"
#include "printer/manager_session.h"
#include "profile/host_profile.h"
#include "profile/required_settings.h"
#include "profile/settings_difference.h"

namespace tvmgr {
namespace {

/** One of the two that are compared. */
struct tagOperand {
  std::string text;                       /**< as the user wrote it */
  std::optional<tagPrinterChoice> choice; /**< of a living printer */
  tagSettingsSource source;
  bool is_whole = true; /**< of a backup that is not, nobody knows what it would have held */
};

std::string_view WordOf(ESettingsSource kind) {
  return kind == ESettingsSource::kProfile  ? "profile"
         : kind == ESettingsSource::kBackup ? "backup"
                                            : "printer";
}

void ReadFile(tagOperand& operand) {
  const std::string bytes = ReadHostFile(operand.text);
  const tagBackupContents contents = ParseBackup(bytes);
  if (contents.is_backup) {
    operand.source = {ESettingsSource::kBackup, SettingsByKey(contents)};
    operand.is_whole = contents.IsComplete();
    return;
  }
  if (!LooksLikeProfile(bytes)) {
    throw CInputFileError("the file \"" + operand.text +
                          "\" is neither a profile nor a backup (a printer is named as printer, port:NAME, "
                          "address:HOST or device:PATH)");
  }
  operand.source.kind = ESettingsSource::kProfile;
  for (const tagProfileSetting& setting : ParseHostProfile(operand.text, bytes).settings) {
    operand.source.values[setting.key] = setting.value;
  }
}

void ReadPrinter(const tagGlobalOptions& global, tagOperand& operand) {
  const CManagerSession session(global, *operand.choice);
  session.RequireAnsweringPrinter();
  session.LoadAll();
  RequireStillAnswering(session, "the settings were read");
  operand.source.kind = ESettingsSource::kPrinter;
  for (const tagSettingName& setting : AllSettings()) {
    if (const std::optional<std::string> value = session.Value(setting.id)) {
      operand.source.values[std::string(setting.key)] = *value;
    }
  }
}

tagOperand OperandOf(const tagGlobalOptions& global, const std::string& text) {
  tagOperand operand{
      text, text == "printer" ? std::optional(ChoiceInForce(global)) : ParseChoiceText(text), {}};
  if (!operand.choice) {
    ReadFile(operand);
  }
  return operand;
}

Json OperandJson(const tagOperand& operand) {
  return {{"kind", WordOf(operand.source.kind)},
          {"source", operand.text},
          {"complete", operand.is_whole},
          {"setting_count", operand.source.values.size()}};
}

void Print(const tagGlobalOptions& global, const tagOperand (&operands)[2],
           const tagSettingsComparison& result, const CLabels& labels, bool is_equal) {
  CRecordOutput output({{"id", ""},
                        {"key", "KEY"},
                        {"name", labels.NameHeading()},
                        {"a", "A"},
                        {"b", "B"},
                        {"verdict", "VERDICT"}});
  for (const tagSettingPair& pair : result.pairs) {
    const std::int32_t id = RequireSetting(pair.key).id;
    const auto cell = [&](const std::optional<std::string>& value) {
      return value ? labels.WithUnit(id, ValueCell(value)) : tagCell::Null("-");
    };
    output.Add({tagCell::Number(id), tagCell::Text(pair.key), labels.NameCell(id), cell(pair.first),
                cell(pair.second),
                tagCell::Verdict(pair.verdict, pair.is_open ? ETone::kOpen : ETone::kBad)});
  }
  if (global.json) {
    output.SetAsJson("settings");
    AddJsonMember("equal", is_equal);
    AddJsonMember("compared", result.compared);
    AddJsonMember("a", OperandJson(operands[0]));
    AddJsonMember("b", OperandJson(operands[1]));
    return;
  }
  output.PrintTable();
  std::string text = is_equal                 ? "equal: "
                     : result.HasDifference() ? "different; compared: "
                                              : "not all compared: ";
  text += std::to_string(result.compared) + " settings";
  for (const tagOperand& operand : operands) {
    text += operand.is_whole ? "" : "; \"" + operand.text + "\" is not a complete backup";
  }
  WriteOutput(text + "\n");
}

}  // namespace

int RunDiff(const tagGlobalOptions& global, const tagDiffOptions& options) {
  const CLabels labels(options.labels);
  // Files first: what is wrong with them is known before a printer is asked.
  tagOperand operands[] = {OperandOf(global, options.first), OperandOf(global, options.second)};
  for (tagOperand& operand : operands) {
    if (operand.choice) {
      ReadPrinter(global, operand);
    }
  }
  const tagSettingsComparison result = CompareSources(operands[0].source, operands[1].source, options.all);
  const bool is_equal =
      result.pairs.empty() && result.compared > 0 && operands[0].is_whole && operands[1].is_whole;
  Print(global, operands, result, labels, is_equal);
  return is_equal ? kExitDone : result.HasDifference() ? kExitFailed : kExitUnproved;
}

}  // namespace tvmgr
