#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "tavira/TaviraManager.h"

namespace tavira {

/** The settings that make up the print resolution, in the order in which they are read again. */
inline constexpr std::array<std::uint32_t, 4> kResolutionSettings{TVMGR_SETTING_CLR_Z, TVMGR_SETTING_CLR_P,
                                                                  TVMGR_SETTING_CLR_R, TVMGR_SETTING_CBB_M};

/** Those of them that the resolution guard captures and writes. */
inline constexpr auto kGuardedResolutions = std::span(kResolutionSettings).first<3>();

/** True for one of kResolutionSettings. */
constexpr bool IsResolutionSetting(std::uint32_t id) {
  return std::find(kResolutionSettings.begin(), kResolutionSettings.end(), id) != kResolutionSettings.end();
}

}  // namespace tavira
