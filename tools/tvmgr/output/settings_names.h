#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

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

/** As FindSetting, but ends the command when there is no such setting. */
tagSettingName RequireSetting(std::string_view number_or_key);

}  // namespace tvmgr
