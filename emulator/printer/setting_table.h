#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace lxemu {

/// One readable setting and the value it leaves the factory with.
struct tagFactorySetting {
  std::string_view key;  ///< three letters, a comma, one character
  std::string_view value;
};

/// The prefix settings hold the byte as two upper-case hexadecimal digits.
inline constexpr std::string_view kControlPrefixKey = "CCC,T";
inline constexpr std::string_view kFormatPrefixKey = "CCC,C";
inline constexpr std::string_view kDelimiterKey = "CCC,D";
/// The read-only printer state.
inline constexpr std::string_view kStatusKey = "SMA,S";

inline constexpr std::size_t kKeyLength = 5;

inline constexpr std::array kFactorySettings = std::to_array<tagFactorySetting>({
    {"IMP,S", "LX-R4100"}, {"IMF,V", "1.20"},  {"CMP,U", "D"},     {"CLM,P", "0"},    {"CLM,S", "4"},
    {"CLM,D", "0"},        {"CLM,T", "120"},   {"CLP,M", "T"},     {"CMP,S", "4"},    {"CMP,F", "100"},
    {"CLM,F", "D"},        {"CLS,P", "0"},     {"CLS,L", "0"},     {"CLS,G", "30"},   {"CLW,T", "0"},
    {"CLW,B", "0"},        {"CLW,R", "0"},     {"CLW,L", "0"},     {"CPC,E", "Y"},    {"CLE,T", "25"},
    {"CLE,M", "A"},        {"CLP,O", "N"},     {"CPC,C", "0"},     {"CPC,D", "15"},   {"CPC,P", "A"},
    {"CPC,B", "0"},        {"CBW,C", "N"},     {"CFE,T", "M"},     {"CLB,I", "N"},    {"CMT,S", "0"},
    {"CMT,T", "0"},        {"CMF,P", "F"},     {"CMF,H", "F"},     {"CMP,M", "T"},    {"CUB,Z", "Y"},
    {"CSL,N", "E"},        {"CWR,P", "0"},     {"CUI,B", "5"},     {"CUI,F", "N"},    {"CUI,C", "3"},
    {"CUL,B", "50"},       {"CUL,C", "1"},     {"CUL,L", "EN"},    {"CMV,S", "2"},    {"CMV,C", "0"},
    {"CMV,I", "20"},       {"CMN,S", "0"},     {"CMV,O", "0"},     {"CMU,A", "0"},    {"CMU,B", "0"},
    {"CMU,C", "0"},        {"CMU,D", "0"},     {"CMU,E", "0"},     {"CMU,F", "0"},    {"CMU,G", "0"},
    {"CCC,T", "7E"},       {"CCC,C", "5E"},    {"CCC,D", "2C"},    {"CPC,Y", "0"},    {"CLA,C", "N"},
    {"CLR,Z", "600"},      {"CLR,P", "600"},   {"CLR,R", "600"},   {"CBB,M", "N"},    {"CFA,W", "0"},
    {"SCM,1", "80"},       {"SCM,2", "64"},    {"SCM,O", "0"},     {"SCM,C", "12"},   {"SCN,L", "1024"},
    {"SCN,C", "37"},       {"INU,S", "R4-01"}, {"INU,N", "LABEL"}, {"INU,U", "USB1"}, {"INU,V", "1A2B"},
    {"INU,P", "4100"},
});

/// The place of a key in kFactorySettings, or its size when there is no such setting.
constexpr std::size_t FindSetting(std::string_view key) {
  for (std::size_t i = 0; i < kFactorySettings.size(); ++i) {
    if (kFactorySettings[i].key == key) {
      return i;
    }
  }
  return kFactorySettings.size();
}

constexpr bool KeysAreWellFormed() {
  for (std::size_t i = 0; i < kFactorySettings.size(); ++i) {
    const std::string_view key = kFactorySettings[i].key;
    if (key.size() != kKeyLength || key[3] != ',' || FindSetting(key) != i) {
      return false;
    }
  }
  return true;
}

static_assert(kFactorySettings.size() == 76, "every readable setting has a factory value");
static_assert(KeysAreWellFormed(), "keys are unique and have five characters");

}  // namespace lxemu
