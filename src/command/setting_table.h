#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace tavira {

/** The start of a command or an answer: at most 8 bytes, kept inside the row. */
class CCommandHead {
 public:
  constexpr CCommandHead() = default;
  constexpr CCommandHead(const char* text) { Append(text); }
  constexpr CCommandHead(std::string_view opening, std::string_view key) {
    Append(opening);
    Append(key);
  }

  constexpr std::string_view View() const { return {text_.data(), size_}; }
  constexpr bool IsEmpty() const { return size_ == 0; }

 private:
  constexpr void Append(std::string_view text) {
    for (const char character : text) {
      text_.at(size_++) = character;  // a head that is too long does not compile
    }
  }

  std::array<char, 8> text_{};
  std::uint8_t size_ = 0;
};

/** The commands of one setting. */
struct tagSettingRow {
  std::int32_t id;
  CCommandHead set_head;    /**< writes the setting; the value follows */
  CCommandHead query_head;  /**< asks for it; empty when it cannot be read */
  CCommandHead answer_head; /**< begins the printer's answer; empty when it cannot be read */
  bool comma;               /**< a "," stands between the set head and the value */
};

inline constexpr std::size_t kSettingKeySize = 5;

constexpr tagSettingRow Row(std::int32_t id, std::string_view key) {
  return {id, {"^S(", key}, {"~H(", key}, {"^S(", key}, true};
}

/**
 * Every setting in the fixed order in which all of them are queried and in which answers are credited. Not
 * changed by other prefix characters: the three prefix settings are written with the alternative ones.
 */
inline constexpr std::array kSettingTable = {
    Row(1, "IMP,S"),
    Row(2, "IMF,V"),
    Row(84, "CMP,U"),
    Row(6, "CLM,P"),
    Row(7, "CLM,S"),
    Row(8, "CLM,D"),
    Row(9, "CLM,T"),
    Row(10, "CLP,M"),
    Row(11, "CMP,S"),
    Row(12, "CMP,F"),
    Row(13, "CLM,F"),
    Row(14, "CLS,P"),
    Row(15, "CLS,L"),
    Row(16, "CLS,G"),
    Row(17, "CLW,T"),
    Row(18, "CLW,B"),
    Row(19, "CLW,R"),
    Row(20, "CLW,L"),
    Row(21, "CPC,E"),
    Row(22, "CLE,T"),
    Row(23, "CLE,M"),
    Row(24, "CLP,O"),
    Row(25, "CPC,C"),
    Row(26, "CPC,D"),
    Row(27, "CPC,P"),
    Row(28, "CPC,B"),
    Row(29, "CBW,C"),
    Row(35, "CFE,T"),
    Row(36, "CLB,I"),
    Row(38, "CMT,S"),
    Row(39, "CMT,T"),
    Row(40, "CMF,P"),
    Row(41, "CMF,H"),
    Row(42, "CMP,M"),
    Row(43, "CUB,Z"),
    Row(44, "CSL,N"),
    Row(45, "CWR,P"),
    tagSettingRow{46, "^ST", {}, {}, false},
    Row(47, "CUI,B"),
    Row(48, "CUI,F"),
    Row(49, "CUI,C"),
    Row(50, "CUL,B"),
    Row(51, "CUL,C"),
    Row(52, "CUL,L"),
    Row(53, "CMV,S"),
    Row(54, "CMV,C"),
    Row(55, "CMV,I"),
    Row(56, "CMN,S"),
    Row(57, "CMV,O"),
    Row(58, "CMU,A"),
    Row(59, "CMU,B"),
    Row(60, "CMU,C"),
    Row(61, "CMU,D"),
    Row(62, "CMU,E"),
    Row(63, "CMU,F"),
    Row(64, "CMU,G"),
    tagSettingRow{65,
                  "\x1E"
                  "CT",
                  "~H(CCC,T", "^S(CCC,T", false},
    tagSettingRow{66,
                  "\x1E"
                  "CC",
                  "~H(CCC,C", "^S(CCC,C", false},
    tagSettingRow{67,
                  "\x1E"
                  "CD",
                  "~H(CCC,D", "^S(CCC,D", false},
    Row(74, "CPC,Y"),
    Row(77, "CLA,C"),
    Row(3, "CLR,Z"),
    Row(4, "CLR,P"),
    Row(5, "CLR,R"),
    Row(76, "CBB,M"),
    Row(78, "CFA,W"),
    Row(68, "SCM,1"),
    Row(69, "SCM,2"),
    Row(70, "SCM,O"),
    Row(71, "SCM,C"),
    Row(72, "SCN,L"),
    Row(73, "SCN,C"),
    Row(79, "INU,S"),
    Row(80, "INU,N"),
    Row(81, "INU,U"),
    Row(83, "INU,V"),
    Row(82, "INU,P"),
};

/** The first row of a setting; null when there is none. */
constexpr const tagSettingRow* FindSetting(std::int32_t id) {
  const auto row = std::find_if(kSettingTable.begin(), kSettingTable.end(),
                                [id](const tagSettingRow& candidate) { return candidate.id == id; });
  return row == kSettingTable.end() ? nullptr : &*row;
}

namespace setting_table_proof {

constexpr bool IdsAreUnique() {
  return std::all_of(kSettingTable.begin(), kSettingTable.end(),
                     [](const tagSettingRow& row) { return FindSetting(row.id) == &row; });
}

constexpr bool HeadsFollowTheRule(const tagSettingRow& row) {
  if (row.id == 46) {
    return row.set_head.View() == "^ST" && row.query_head.IsEmpty() && row.answer_head.IsEmpty() &&
           !row.comma;
  }
  const std::string_view key = row.query_head.View().substr(3);
  const bool is_prefix = row.id >= 65 && row.id <= 67;
  return key.size() == kSettingKeySize && key[3] == ',' && row.query_head.View().starts_with("~H(") &&
         row.answer_head.View().starts_with("^S(") && row.answer_head.View().ends_with(key) &&
         row.comma == !is_prefix && row.set_head.View().size() == (is_prefix ? 3 : 8) &&
         (is_prefix ? row.set_head.View()[0] == '\x1E' : row.set_head.View() == row.answer_head.View());
}

static_assert(kSettingTable.size() == 77);
static_assert(IdsAreUnique());
static_assert(std::all_of(kSettingTable.begin(), kSettingTable.end(), HeadsFollowTheRule));
static_assert(kSettingTable[0].id == 1 && kSettingTable[2].id == 84 && kSettingTable[3].id == 6 &&
              kSettingTable[76].id == 82 && kSettingTable[75].id == 83);
static_assert(FindSetting(77) + 1 == FindSetting(3) && FindSetting(3) + 1 == FindSetting(4) &&
              FindSetting(4) + 1 == FindSetting(5) && FindSetting(5) + 1 == FindSetting(76));
static_assert(FindSetting(0) == nullptr && FindSetting(30) == nullptr && FindSetting(34) == nullptr &&
              FindSetting(37) == nullptr && FindSetting(75) == nullptr && FindSetting(85) == nullptr);

}  // namespace setting_table_proof
}  // namespace tavira
