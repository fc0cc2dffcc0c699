#include "names/setting_names.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "names/ascii_text.h"
#include "names/name_pattern.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

constexpr tagSettingName kSettings[] = {
    {TVMGR_SETTING_IMP_S, "IMP,S"}, {TVMGR_SETTING_IMF_V, "IMF,V"},
    {TVMGR_SETTING_CLR_Z, "CLR,Z"}, {TVMGR_SETTING_CLR_P, "CLR,P"},
    {TVMGR_SETTING_CLR_R, "CLR,R"}, {TVMGR_SETTING_CLM_P, "CLM,P"},
    {TVMGR_SETTING_CLM_S, "CLM,S"}, {TVMGR_SETTING_CLM_D, "CLM,D"},
    {TVMGR_SETTING_CLM_T, "CLM,T"}, {TVMGR_SETTING_CLP_M, "CLP,M"},
    {TVMGR_SETTING_CMP_S, "CMP,S"}, {TVMGR_SETTING_CMP_F, "CMP,F"},
    {TVMGR_SETTING_CLM_F, "CLM,F"}, {TVMGR_SETTING_CLS_P, "CLS,P"},
    {TVMGR_SETTING_CLS_L, "CLS,L"}, {TVMGR_SETTING_CLS_G, "CLS,G"},
    {TVMGR_SETTING_CLW_T, "CLW,T"}, {TVMGR_SETTING_CLW_B, "CLW,B"},
    {TVMGR_SETTING_CLW_R, "CLW,R"}, {TVMGR_SETTING_CLW_L, "CLW,L"},
    {TVMGR_SETTING_CPC_E, "CPC,E"}, {TVMGR_SETTING_CLE_T, "CLE,T"},
    {TVMGR_SETTING_CLE_M, "CLE,M"}, {TVMGR_SETTING_CLP_O, "CLP,O"},
    {TVMGR_SETTING_CPC_C, "CPC,C"}, {TVMGR_SETTING_CPC_D, "CPC,D"},
    {TVMGR_SETTING_CPC_P, "CPC,P"}, {TVMGR_SETTING_CPC_B, "CPC,B"},
    {TVMGR_SETTING_CBW_C, "CBW,C"}, {TVMGR_SETTING_CFE_T, "CFE,T"},
    {TVMGR_SETTING_CLB_I, "CLB,I"}, {TVMGR_SETTING_BACKGROUND, "BACKGROUND"},
    {TVMGR_SETTING_CMT_S, "CMT,S"}, {TVMGR_SETTING_CMT_T, "CMT,T"},
    {TVMGR_SETTING_CMF_P, "CMF,P"}, {TVMGR_SETTING_CMF_H, "CMF,H"},
    {TVMGR_SETTING_CMP_M, "CMP,M"}, {TVMGR_SETTING_CUB_Z, "CUB,Z"},
    {TVMGR_SETTING_CSL_N, "CSL,N"}, {TVMGR_SETTING_CWR_P, "CWR,P"},
    {TVMGR_SETTING_ST, "ST"},       {TVMGR_SETTING_CUI_B, "CUI,B"},
    {TVMGR_SETTING_CUI_F, "CUI,F"}, {TVMGR_SETTING_CUI_C, "CUI,C"},
    {TVMGR_SETTING_CUL_B, "CUL,B"}, {TVMGR_SETTING_CUL_C, "CUL,C"},
    {TVMGR_SETTING_CUL_L, "CUL,L"}, {TVMGR_SETTING_CMV_S, "CMV,S"},
    {TVMGR_SETTING_CMV_C, "CMV,C"}, {TVMGR_SETTING_CMV_I, "CMV,I"},
    {TVMGR_SETTING_CMN_S, "CMN,S"}, {TVMGR_SETTING_CMV_O, "CMV,O"},
    {TVMGR_SETTING_CMU_A, "CMU,A"}, {TVMGR_SETTING_CMU_B, "CMU,B"},
    {TVMGR_SETTING_CMU_C, "CMU,C"}, {TVMGR_SETTING_CMU_D, "CMU,D"},
    {TVMGR_SETTING_CMU_E, "CMU,E"}, {TVMGR_SETTING_CMU_F, "CMU,F"},
    {TVMGR_SETTING_CMU_G, "CMU,G"}, {TVMGR_SETTING_CCC_T, "CCC,T"},
    {TVMGR_SETTING_CCC_C, "CCC,C"}, {TVMGR_SETTING_CCC_D, "CCC,D"},
    {TVMGR_SETTING_SCM_1, "SCM,1"}, {TVMGR_SETTING_SCM_2, "SCM,2"},
    {TVMGR_SETTING_SCM_O, "SCM,O"}, {TVMGR_SETTING_SCM_C, "SCM,C"},
    {TVMGR_SETTING_SCN_L, "SCN,L"}, {TVMGR_SETTING_SCN_C, "SCN,C"},
    {TVMGR_SETTING_CPC_Y, "CPC,Y"}, {TVMGR_SETTING_CBB_M, "CBB,M"},
    {TVMGR_SETTING_CLA_C, "CLA,C"}, {TVMGR_SETTING_CFA_W, "CFA,W"},
    {TVMGR_SETTING_INU_S, "INU,S"}, {TVMGR_SETTING_INU_N, "INU,N"},
    {TVMGR_SETTING_INU_U, "INU,U"}, {TVMGR_SETTING_INU_P, "INU,P"},
    {TVMGR_SETTING_INU_V, "INU,V"}, {TVMGR_SETTING_CMP_U, "CMP,U"},
};

constexpr bool IsStrictlyAscending() {
  for (std::size_t i = 1; i < std::size(kSettings); ++i) {
    if (kSettings[i - 1].id >= kSettings[i].id) {
      return false;
    }
  }
  return true;
}
static_assert(IsStrictlyAscending(), "listed by number, each number once");
static_assert(std::size(kSettings) == 78,
              "76 settings to read, the background file, and the one written only");

// "CLR_Z" and "CLR.Z" as "CLR,Z".
std::string CanonicalKey(std::string_view text) {
  std::string key = UpperAscii(text);
  std::replace_if(
      key.begin(), key.end(), [](char c) { return c == '_' || c == '.'; }, ',');
  return key;
}

}  // namespace

std::span<const tagSettingName> AllSettings() {
  return kSettings;
}

std::optional<tagSettingName> FindSetting(std::string_view number_or_key) {
  std::int32_t number = 0;
  const char* const end = number_or_key.data() + number_or_key.size();
  const auto [stop, error] = std::from_chars(number_or_key.data(), end, number);
  const bool is_number = error == std::errc() && stop == end;
  const std::string key = CanonicalKey(number_or_key);
  for (const tagSettingName& setting : kSettings) {
    if (is_number ? setting.id == number : setting.key == key) {
      return setting;
    }
  }
  return std::nullopt;
}

std::string_view GroupOf(std::string_view key) {
  return key.substr(0, 3);
}

std::vector<tagSettingName> SettingsNamed(std::string_view word) {
  if (const std::optional<tagSettingName> setting = FindSetting(word)) {
    return {*setting};
  }
  const std::string key = CanonicalKey(word);
  std::vector<tagSettingName> found;
  std::copy_if(std::begin(kSettings), std::end(kSettings), std::back_inserter(found),
               [&](const tagSettingName& setting) {
                 return IsPattern(key) ? MatchesPattern(key, setting.key)
                                       : setting.key.size() == 5 && GroupOf(setting.key) == key;
               });
  return found;
}

}  // namespace tvmgr
