#include <algorithm>

#include "commands/commands.h"
#include "output/command_error.h"
#include "output/record_output.h"
#include "output/setting_cell.h"
#include "output/text_encoding.h"
#include "printer/answers.h"
#include "printer/manager_session.h"
#include "profile/host_profile.h"
#include "profile/required_settings.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

std::vector<tagSettingName> Wanted(const tagGetOptions& options) {
  std::vector<tagSettingName> wanted = RequireSettings(options.settings);
  if (options.all) {
    const auto all = AllSettings();
    wanted.assign(all.begin(), all.end());
  }
  if (wanted.empty()) {
    throw CUsageError("name settings by number, key, group or pattern, or give --all");
  }
  return wanted;
}

// The bytes of the background file say nothing in a table: its size does, and "fetch" gets the file.
std::vector<tagCell> BackgroundRow(const tagSettingName& setting, const std::optional<std::string>& bytes) {
  const std::size_t size = bytes ? bytes->size() : 0;
  return {tagCell::Number(setting.id),
          tagCell::Text(std::string(setting.key)),
          tagCell::Null(""),
          tagCell::Null(size == 0 ? "no background file"
                                  : "background file of " + std::to_string(size) + " bytes"),
          tagCell::Null(""),
          tagCell::Null(""),
          tagCell::Number(static_cast<std::int64_t>(size)),
          {"", false}};
}

// Every load holds the mode at D on a printer that is not neutral, so a D may be the guard's.
bool MayBeTheGuards(const tagSettingName& setting, const std::optional<std::string>& value) {
  return setting.id == TVMGR_SETTING_CMP_U && value && EqualsIgnoreCase(*value, "D");
}

}  // namespace

int RunGet(const tagGlobalOptions& global, const tagGetOptions& options) {
  const std::vector<tagSettingName> wanted = Wanted(options);
  const CLabels labels(options.labels);
  const CManagerSession session(global);
  session.RequireAnsweringPrinter();
  // Also for a single setting: a load of one setting only refreshes values that a full load has stored
  // before, and in a process that has just started there are none. After the full load every value is the
  // printer's.
  session.LoadAll();

  CRecordOutput output({{"id", "ID"},
                        {"key", "KEY"},
                        {"name", labels.NameHeading()},
                        {"value", "VALUE"},
                        {"meaning", ""},
                        {"hex", ""},
                        {"size", ""},
                        {"guard", ""}});
  std::string missing;
  std::size_t answered = 0;
  bool has_doubt = false;
  for (const tagSettingName& setting : wanted) {
    const std::optional<std::string> value = session.Value(setting.id);
    if (setting.id == TVMGR_SETTING_BACKGROUND) {
      output.Add(BackgroundRow(setting, value));
      ++answered;
      continue;
    }
    tagCell cell = labels.WithUnit(setting.id, ValueCell(value));
    if (setting.id == TVMGR_SETTING_ST) {
      cell.shown = "written only";
    }
    const bool is_doubtful = MayBeTheGuards(setting, value);
    has_doubt = has_doubt || is_doubtful;
    if (is_doubtful) {
      cell.shown += "  (perhaps the guard's)";
    }
    output.Add({tagCell::Number(setting.id),
                tagCell::Text(std::string(setting.key)),
                labels.NameCell(setting.id),
                cell,
                labels.MeaningCell(setting.id, value),
                HexCell(value),
                tagCell::Null(""),
                {"", is_doubtful}});
    if (!value && setting.id != TVMGR_SETTING_ST) {
      missing += (missing.empty() ? "" : " ") + std::string(setting.key);
    }
    answered += value ? 1U : 0U;
  }
  global.json ? output.SetAsJson("settings") : output.PrintTable();
  if (has_doubt) {
    session.Remark(
        "remark: CMP,U (84) is held at D while settings are read from a printer whose resolutions are not "
        "all "
        "600 or whose mode is not D; its own mode may be another");
  }
  if (!missing.empty() || answered == 0) {
    RequireStillAnswering(session, "the settings were read");
    throw CFailure(
        missing.empty() ? "this setting can be written only" : "the printer gave no value for " + missing,
        answered == 0 ? kExitFailed : kExitUnproved);
  }
  return kExitDone;
}

}  // namespace tvmgr
