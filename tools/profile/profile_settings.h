#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "tavira/TaviraManager.h"

namespace tvmgr {

/**
 * Settings that belong to one device, or tell of it: what it says it is, names and addresses, and what no backup
 * holds either, counters and measured values among them. Profiles leave them out unless all are asked for.
 */
constexpr bool BelongsToDevice(std::int32_t id) {
  return id == TVMGR_SETTING_IMP_S || id == TVMGR_SETTING_IMF_V ||
         (id >= TVMGR_SETTING_CMU_A && id <= TVMGR_SETTING_CMU_G) ||
         (id >= TVMGR_SETTING_SCM_1 && id <= TVMGR_SETTING_CPC_Y) ||
         (id >= TVMGR_SETTING_INU_S && id <= TVMGR_SETTING_INU_V);
}

/** Why no profile can hold the setting; empty: it can. */
constexpr std::string_view WhyNotInProfiles(std::int32_t id) {
  if (id == TVMGR_SETTING_BACKGROUND) {
    return "the background is a file: \"tvmgr put\" stores it";
  }
  if (id == TVMGR_SETTING_ST) {
    return "it can be written only, so nothing could be compared: \"tvmgr set\" writes it";
  }
  if (id >= TVMGR_SETTING_CCC_T && id <= TVMGR_SETTING_CCC_D) {
    return "it is a prefix character: \"tvmgr prefix\" changes these";
  }
  if (id == TVMGR_SETTING_CMP_U) {
    return "the resolution guard hides it from every reading: \"tvmgr set\" writes it";
  }
  return {};
}

/** The resolutions: the guard puts them back after a write, unless it is told to leave them alone. */
constexpr bool IsResolution(std::int32_t id) {
  return id == TVMGR_SETTING_CLR_Z || id == TVMGR_SETTING_CLR_P || id == TVMGR_SETTING_CLR_R;
}

/** What begins a command, or ends a frame: the bytes ^ ~ and control characters. */
constexpr bool IsSafeValue(std::string_view value) {
  return std::none_of(value.begin(), value.end(),
                      [](char c) { return c == '^' || c == '~' || static_cast<unsigned char>(c) < 0x20; });
}

/** Bytes: more than any value of the printer has, and little enough to be shown. */
inline constexpr std::size_t kLongestValue = 255;

}  // namespace tvmgr
