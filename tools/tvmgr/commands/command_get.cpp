#include <algorithm>

#include "commands/commands.h"
#include "output/command_error.h"
#include "output/record_output.h"
#include "output/setting_cell.h"
#include "output/settings_names.h"
#include "printer/manager_session.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

std::vector<tagSettingName> Wanted(const tagGetOptions& options) {
  std::vector<tagSettingName> wanted;
  for (const std::string& name : options.settings) {
    wanted.push_back(RequireSetting(name));
  }
  if (options.all) {
    const auto all = AllSettings();
    wanted.assign(all.begin(), all.end());
  }
  if (wanted.empty()) {
    throw CUsageError("name settings by number or key, or give --all");
  }
  return wanted;
}

// The bytes of the background file say nothing in a table: its size does, and "fetch" gets the file.
std::vector<tagCell> BackgroundRow(const tagSettingName& setting, const std::optional<std::string>& bytes) {
  const std::size_t size = bytes ? bytes->size() : 0;
  return {tagCell::Number(setting.id), tagCell::Text(std::string(setting.key)),
          tagCell::Absent(size == 0 ? "no background file"
                                    : "background file of " + std::to_string(size) + " bytes"),
          tagCell::Absent(), tagCell::Number(static_cast<std::int64_t>(size))};
}

// Every load holds the mode at "D" when the printer is not neutral, so its own value cannot be seen then.
void RemarkOnMode(const CManagerSession& session, const std::vector<tagSettingName>& wanted, bool all) {
  const bool shown = std::any_of(wanted.begin(), wanted.end(), [](const tagSettingName& setting) {
    return setting.id == TVMGR_SETTING_CMP_U;
  });
  const bool neutral = session.Value(TVMGR_SETTING_CLR_Z) == "600" &&
                       session.Value(TVMGR_SETTING_CLR_P) == "600" &&
                       session.Value(TVMGR_SETTING_CLR_R) == "600";
  if (shown && !(all && neutral)) {
    session.Remark(
        "remark: CMP,U (84) is held at D while settings are read; the printer's own mode may be another");
  }
}

}  // namespace

int RunGet(const tagGlobalOptions& global, const tagGetOptions& options) {
  const std::vector<tagSettingName> wanted = Wanted(options);
  const CManagerSession session(global);
  session.RequireAnsweringPrinter();
  // Also for a single setting: a load of one setting only refreshes values that a full load has stored
  // before, and in a process that has just started there are none. After the full load every value is the
  // printer's.
  session.LoadAll();

  CRecordOutput output({{"id", "ID"}, {"key", "KEY"}, {"value", "VALUE"}, {"hex", ""}, {"size", ""}});
  std::string missing;
  for (const tagSettingName& setting : wanted) {
    const std::optional<std::string> value = session.Value(setting.id);
    if (setting.id == TVMGR_SETTING_BACKGROUND) {
      output.Add(BackgroundRow(setting, value));
      continue;
    }
    tagCell cell = ValueCell(value);
    if (setting.id == TVMGR_SETTING_ST) {
      cell.shown = "written only";
    }
    output.Add({tagCell::Number(setting.id), tagCell::Text(std::string(setting.key)), cell, HexCell(value),
                tagCell::Absent()});
    if (!value) {
      missing += (missing.empty() ? "" : " ") + std::string(setting.key);
    }
  }
  global.json ? output.PrintJson() : output.PrintTable();
  RemarkOnMode(session, wanted, options.all);
  if (!missing.empty() && !options.all) {
    throw CFailure("the printer gave no value for " + missing);
  }
  return kExitDone;
}

}  // namespace tvmgr
