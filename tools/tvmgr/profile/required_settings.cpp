#include "profile/required_settings.h"

#include <algorithm>

#include "names/name_pattern.h"
#include "output/command_error.h"

namespace tvmgr {

tagSettingName RequireSetting(std::string_view number_or_key) {
  const std::optional<tagSettingName> setting = FindSetting(number_or_key);
  if (!setting) {
    throw CUsageError("there is no setting \"" + std::string(number_or_key) +
                      "\"; \"tvmgr get --all\" lists the numbers and keys");
  }
  return *setting;
}

std::vector<tagSettingName> RequireSettings(const std::vector<std::string>& words) {
  std::vector<tagSettingName> settings;
  for (const std::string& word : words) {
    const std::vector<tagSettingName> named = SettingsNamed(word);
    if (named.empty()) {
      throw CUsageError((IsPattern(word) ? "no setting matches \"" : "there is no setting and no group \"") +
                        word + "\"; \"tvmgr get --all\" lists the numbers and keys");
    }
    for (const tagSettingName& setting : named) {
      const bool is_there = std::any_of(settings.begin(), settings.end(), [&](const tagSettingName& earlier) {
        return earlier.id == setting.id;
      });
      if (!is_there) {
        settings.push_back(setting);
      }
    }
  }
  return settings;
}

}  // namespace tvmgr
