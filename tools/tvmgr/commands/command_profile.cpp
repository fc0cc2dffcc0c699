// Settings as a file that people read and write.
#include <algorithm>

#include "commands/commands.h"
#include "files/file_target.h"
#include "files/host_data.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/text_encoding.h"
#include "printer/answers.h"
#include "printer/manager_session.h"
#include "profile/host_profile.h"
#include "profile/profile_settings.h"
#include "profile/required_settings.h"
#include "profile/settings_application.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

bool Contains(const std::vector<tagSettingName>& settings, std::int32_t id) {
  return std::any_of(settings.begin(), settings.end(),
                     [id](const tagSettingName& setting) { return setting.id == id; });
}

std::string ShownValue(const CManagerSession& session, std::int32_t id) {
  return EscapeBytes(session.Value(id).value_or(""));
}

void Append(std::string& list, std::string_view key) {
  list += (list.empty() ? "" : " ") + std::string(key);
}

/** What a printer's settings become in a profile. */
struct tagExported {
  tagProfile profile;
  std::string missing;  /**< keys of those that were not answered, or not with a value that could be sent */
  std::string left_out; /**< keys of those that belong to the device */
  std::string empty;    /**< keys of those that have no value */
};

tagExported ReadExported(const CManagerSession& session, const tagExportOptions& options,
                         const std::vector<tagSettingName>& only) {
  tagExported exported;
  for (const tagSettingName& setting : AllSettings()) {
    const bool is_named = Contains(only, setting.id);
    if (!WhyNotInProfiles(setting.id).empty() || (!only.empty() && !is_named)) {
      continue;
    }
    if (BelongsToDevice(setting.id) && !options.all && !is_named) {
      Append(exported.left_out, setting.key);
      continue;
    }
    const std::optional<std::string> value = session.Value(setting.id);
    if (value && value->empty()) {
      Append(exported.empty, setting.key);
    } else if (!value || !IsSafeValue(*value) || value->size() > kLongestValue) {
      Append(exported.missing, setting.key);
    } else {
      exported.profile.settings.push_back({setting.id, std::string(setting.key), *value, 0});
    }
  }
  return exported;
}

void RequireReadBack(const std::string& path, const tagProfile& profile) {
  const tagProfile read = ReadProfile(path);
  const bool is_equal = std::equal(read.settings.begin(), read.settings.end(), profile.settings.begin(),
                                   profile.settings.end(), [](const auto& first, const auto& second) {
                                     return first.id == second.id && first.value == second.value;
                                   });
  if (!is_equal) {
    throw COutputFileError("the file \"" + path + "\" does not hold what was written to it");
  }
}

std::vector<tagSettingName> OnlySettings(const std::vector<std::string>& words) {
  std::vector<tagSettingName> only = RequireSettings(words);
  const bool is_word = words.size() == 1 && FindSetting(words.front());
  if (const std::string_view why = is_word ? WhyNotInProfiles(only.front().id) : ""; !why.empty()) {
    throw CUsageError(std::string(only.front().key) + " cannot be in a profile: " + std::string(why));
  }
  return only;
}

void RefuseOtherModel(const CManagerSession& session, const tagProfile& profile, const std::string& path,
                      bool force) {
  const std::string model = ShownValue(session, TVMGR_SETTING_IMP_S);
  const std::string firmware = ShownValue(session, TVMGR_SETTING_IMF_V);
  if (!profile.model.empty() && profile.model != model && !force) {
    throw CFailure("nothing was written: \"" + path + "\" came from a printer that called itself " +
                   profile.model + ", this one says " + (model.empty() ? "nothing of that" : model) +
                   " (--force writes it all the same)");
  }
  if (!profile.firmware.empty() && profile.firmware != firmware) {
    session.Remark("remark: the profile came from a printer with version " + profile.firmware +
                   ", this one has " + (firmware.empty() ? "none that it tells" : firmware));
  }
}

std::vector<tagWantedSetting> WantedSettings(const tagProfile& profile, const tagApplyOptions& options) {
  const std::vector<tagSettingName> only = OnlySettings(options.only);
  std::vector<tagWantedSetting> wanted;
  for (const tagProfileSetting& setting : profile.settings) {
    const bool is_named = Contains(only, setting.id);
    if (only.empty() || is_named) {
      const bool is_left_out = BelongsToDevice(setting.id) && !options.all && !is_named;
      wanted.push_back({setting.id, setting.key, setting.value, is_left_out});
    }
  }
  for (const std::string& word : options.only) {
    const std::vector<tagSettingName> named = SettingsNamed(word);
    const bool is_there = std::any_of(wanted.begin(), wanted.end(), [&](const tagWantedSetting& setting) {
      return Contains(named, setting.id);
    });
    if (!is_there) {
      throw CUsageError("the profile \"" + options.file + "\" has no setting \"" + word + "\"");
    }
  }
  return wanted;
}

void RefuseValues(const tagProfile& profile, const std::vector<tagWantedSetting>& wanted,
                  const CLabels& labels, const std::string& path) {
  for (const tagWantedSetting& setting : wanted) {
    const std::string why = labels.WhyNot(setting.id, setting.wanted);
    if (why.empty() || setting.is_left_out) {
      continue;
    }
    const auto stands =
        std::find_if(profile.settings.begin(), profile.settings.end(),
                     [&](const tagProfileSetting& in_file) { return in_file.id == setting.id; });
    throw CFailure("nothing was written: the file \"" + path + "\", line " + std::to_string(stands->line) +
                   ": \"" + EscapeBytes(setting.wanted) + "\" is no value of " + setting.key + ": " + why +
                   " (--force writes it all the same)");
  }
}

}  // namespace

int RunExport(const tagGlobalOptions& global, const tagExportOptions& options) {
  const std::vector<tagSettingName> only = OnlySettings(options.only);
  ConfirmOverwriting(options.file, options.yes);
  CFileTarget target(options.file, "the profile");
  const tagPrinterChoice choice = ChoiceInForce(global);
  const CManagerSession session(global, choice);
  session.RequireAnsweringPrinter();
  session.LoadAll();
  RequireStillAnswering(session, "the settings were read");
  tagExported exported = ReadExported(session, options, only);
  tagProfile& profile = exported.profile;
  const Json printer = PrinterJson(choice);
  profile.kind = printer["kind"].is_null() ? "" : printer["kind"].get<std::string>();
  profile.printer = printer["value"].is_null() ? "" : printer["value"].get<std::string>();
  profile.model = ShownValue(session, TVMGR_SETTING_IMP_S);
  profile.firmware = ShownValue(session, TVMGR_SETTING_IMF_V);
  profile.time = TimeStamp().substr(0, std::string_view("2031-05-04 13:14:15").size());
  if (profile.settings.empty()) {
    throw CFailure("the printer gave no value that a profile could hold");
  }
  WriteHostFile(target.Partial(), FormatProfile(profile, EscapeBytes));
  RequireReadBack(target.Partial(), profile);
  const bool is_whole = exported.missing.empty();
  const std::string& path = is_whole ? options.file : target.Partial();
  if (is_whole) {
    target.Commit();
  }
  if (global.json) {
    SetJsonResult({{"file", path},
                   {"complete", is_whole},
                   {"setting_count", profile.settings.size()},
                   {"missing", TextOrNull(exported.missing)},
                   {"empty", TextOrNull(exported.empty)},
                   {"left_out", TextOrNull(exported.left_out)}});
  } else {
    WriteOutput(path + ": " + std::to_string(profile.settings.size()) + " settings\n");
  }
  if (!exported.left_out.empty()) {
    session.Remark("remark: left out, as they belong to this device (--all takes them): " +
                   exported.left_out);
  }
  if (!exported.empty.empty()) {
    session.Remark("remark: left out, as they have no value: " + exported.empty);
  }
  if (!is_whole) {
    throw CUnproved("the profile is not complete; \"" + path + "\" holds what there is, \"" + options.file +
                    "\" is as it was: the printer gave no value that can be sent for " + exported.missing);
  }
  return kExitDone;
}

int RunApply(const tagGlobalOptions& global, const tagApplyOptions& options) {
  const tagProfile profile = ReadProfile(options.file);
  const CLabels labels(options.labels);
  tagApplication application{WantedSettings(profile, options), {}, options.yes, options.dry_run, {}};
  if (!options.force) {
    RefuseValues(profile, application.settings, labels, options.file);
  }
  const tagPrinterChoice choice = RequireChoice(global);
  application.printer = Describe(choice);
  application.members = {{"file", options.file}};
  NoteNothingSent(labels, application);
  const CManagerSession session(global, choice);
  session.RequireAnsweringPrinter();
  session.LoadAll();
  RequireStillAnswering(session, "the settings were read");
  RefuseOtherModel(session, profile, options.file, options.force);
  return ApplySettings(global, session, labels, std::move(application));
}

}  // namespace tvmgr
