#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace tvmgr {

/**
 * The settings of a backup, in the order in which they stand there: that of the printer's panel first, the
 * resolutions and what depends on them behind, the names last.
 */
inline constexpr std::array kBackupSettings = std::to_array<std::string_view>({
    "CLM,P", "CLM,S", "CLM,D", "CLM,T", "CLP,M", "CMP,S", "CMP,F", "CLM,F", "CLS,P", "CLS,L", "CLS,G",
    "CLW,T", "CLW,B", "CLW,R", "CLW,L", "CPC,E", "CLE,T", "CLE,M", "CLP,O", "CPC,C", "CPC,D", "CPC,P",
    "CPC,B", "CBW,C", "CFE,T", "CLB,I", "CMT,S", "CMT,T", "CMF,P", "CMF,H", "CMP,M", "CUB,Z", "CSL,N",
    "CWR,P", "CUI,B", "CUI,F", "CUI,C", "CUL,B", "CUL,C", "CUL,L", "CMV,S", "CMV,C", "CMV,I", "CMN,S",
    "CMV,O", "CLA,C", "CLR,Z", "CLR,P", "CLR,R", "CBB,M", "CFA,W", "INU,S", "INU,N", "INU,P", "INU,V",
});
static_assert(kBackupSettings.size() == 55);

/** The prefix characters, which a backup holds in one block of their own: control, format, delimiter. */
inline constexpr std::array kPrefixSettings = std::to_array<std::string_view>({"CCC,T", "CCC,C", "CCC,D"});

/** Settings that the printer can be asked for. */
inline constexpr std::size_t kReadableSettings = 76;

/** True when a backup holds the setting, prefix characters included. */
constexpr bool IsInBackups(std::string_view key) {
  return std::find(kBackupSettings.begin(), kBackupSettings.end(), key) != kBackupSettings.end() ||
         std::find(kPrefixSettings.begin(), kPrefixSettings.end(), key) != kPrefixSettings.end();
}

}  // namespace tvmgr
