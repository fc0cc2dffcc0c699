#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "names/setting_names.h"

namespace tvmgr {

/** As FindSetting, but ends the command (usage) when there is no such setting. */
tagSettingName RequireSetting(std::string_view number_or_key);

/**
 * What several words name, see SettingsNamed: in the order of the words, each setting once. A word that names none
 * ends the command (usage).
 */
std::vector<tagSettingName> RequireSettings(const std::vector<std::string>& words);

}  // namespace tvmgr
