#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace tvmgr {

/** A setting's number (enum TvmgrSetting) and the key by which the printer knows it. */
struct tagSettingName {
  std::int32_t id;
  std::string_view key;
};

/** All settings, in the order of their numbers. */
std::span<const tagSettingName> AllSettings();

/**
 * Finds a setting by number ("3") or key ("CLR,Z", any letter case). "CLR_Z" and "CLR.Z" are the same key,
 * for shells in which a comma separates arguments.
 */
std::optional<tagSettingName> FindSetting(std::string_view number_or_key);

/** The first three letters of a key, by which settings are grouped; "ST" for "ST". */
std::string_view GroupOf(std::string_view key);

/**
 * The settings that a word of the command line names, in the order of their numbers: one by number or key as
 * FindSetting, a group by its three letters ("CLM"), or all whose keys match a pattern ("CLM,*", "C?_P"). Empty when
 * there are none.
 */
std::vector<tagSettingName> SettingsNamed(std::string_view word);

}  // namespace tvmgr
