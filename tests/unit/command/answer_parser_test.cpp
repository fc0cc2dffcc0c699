#include "command/answer_parser.h"

#include <gtest/gtest.h>

#include <random>

#include "command/setting_table.h"

namespace tavira {
namespace {

struct tagFrameCase {
  std::string_view frame;
  std::uint32_t id;  // 0: no row matches
  std::string_view value;
};

TEST(AnswerParserTest, CreditsAFrameToTheFirstRowWithSomethingBehindItsHead) {
  const tagFrameCase cases[] = {
      {"^S(CLR,Z,600", 3, "600"},
      {"^S(CLR,Z600", 3, "600"},
      {"^S(CLR,Z,", 3, ""},
      {"^S(CLR,Z", 0, ""},
      {"^S(CLR,Z,,600", 3, ",600"},
      {"^S(CCC,T1", 65, "1"},
      {"^S(CCC,D,2C", 67, "2C"},
      {"noise^S(IMP,S, a \r\n", 1, " a \r\n"},
      {"^S(CLR,Z,1^S(IMP,S,2", 1, "2"},  // two heads: the earlier row wins, wherever it stands
      {"^S(IMP,S,1^S(CLR,Z,2", 1, "1^S(CLR,Z,2"},
      {"^S(CLR,Z,1^S(IMP,S", 3, "1^S(IMP,S"},      // an earlier row without anything behind does not win
      {"^S(CLR,Z,1^S(CLR,Z,2", 3, "1^S(CLR,Z,2"},  // the first occurrence counts
      {"^S^S(CLR,Z,5", 3, "5"},
      {"^S(clr,Z,600", 0, ""},
      {"^ST,1", 0, ""},
      {"~H(CLR,Z", 0, ""},
      {"", 0, ""},
  };
  for (const tagFrameCase& c : cases) {
    std::uint32_t id = 0;
    std::string_view value;
    EXPECT_EQ(c.id != 0, MatchAnswerFrame(c.frame, id, value)) << c.frame;
    EXPECT_EQ(c.id, id) << c.frame;
    EXPECT_EQ(c.value, value) << c.frame;
  }
}

std::string Describe(const std::vector<tagSettingRecord>& records) {
  std::string text;
  for (const tagSettingRecord& record : records) {
    text += std::to_string(record.id) + "=" + record.value + ";";
  }
  return text;
}

TEST(AnswerParserTest, ReadsOnlyWhatStandsInTerminatedFrames) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"", ""},
      {"^S(IMP,S,1", ""},
      {"\x02^S(IMP,S,1", ""},
      {"\x03\x02^S(IMP,S,1\x03", "1=1;"},
      {"\x02^S(IMP,S,1\x03\r\n\x02^S(IMF,V,2\x03", "1=1;2=2;"},
      {"\x02\x03\x02^S(IMP,S,1\x03", "1=1;"},
      {"\x02\x02^S(IMP,S,1\x03", "1=1;"},
      {"\x02^S(IMP,S,1\x03\x02^S(IMP,S,2\x03", "1=1;1=2;"},
      {"\x02^S(XXX,X,1\x03\x02^S(IMP,S,2\x03\x02^S(IMF,V", "1=2;"},
  };
  for (const auto& [answer, expected] : cases) {
    EXPECT_EQ(expected, Describe(ScanAnswers(answer))) << answer;
  }
}

/** The rule as it is stated: every row in table order is searched for in the frame. */
bool MatchByEveryRow(std::string_view frame, std::uint32_t& id, std::string_view& value) {
  for (const tagSettingRow& row : kSettingTable) {
    const std::string_view head = row.answer_head.View();
    const std::size_t at = head.empty() ? std::string_view::npos : frame.find(head);
    if (at == std::string_view::npos || at + head.size() == frame.size()) {
      continue;
    }
    value = frame.substr(at + head.size());
    if (value[0] == ',') {
      value.remove_prefix(1);
    }
    id = static_cast<std::uint32_t>(row.id);
    return true;
  }
  return false;
}

TEST(AnswerParserTest, AgreesWithTheRowByRowRuleOnGeneratedFrames) {
  std::mt19937 random(20260101);
  const auto pick = [&random](std::size_t count) { return random() % count; };
  int matched = 0;
  for (int round = 0; round < 20000; ++round) {
    std::string frame;
    for (std::size_t piece = pick(6); piece > 0; --piece) {
      switch (pick(5)) {
        case 0:
          frame += "^S(";
          break;
        case 1:
          frame += ',';
          break;
        case 2:
          frame += std::string(pick(20), static_cast<char>('0' + pick(10)));
          break;
        default: {
          std::string head(kSettingTable[pick(kSettingTable.size())].answer_head.View());
          if (pick(4) == 0 && !head.empty()) {
            head.resize(pick(head.size()));
          }
          frame += head;
        }
      }
    }
    std::uint32_t expected_id = 0;
    std::uint32_t id = 0;
    std::string_view expected_value;
    std::string_view value;
    const bool expected = MatchByEveryRow(frame, expected_id, expected_value);
    ASSERT_EQ(expected, MatchAnswerFrame(frame, id, value)) << frame;
    ASSERT_EQ(expected_id, id) << frame;
    ASSERT_EQ(expected_value, value) << frame;
    const std::string record = expected ? Describe({{id, std::string(value)}}) : "";
    const std::string behind(pick(9), ' ');
    ASSERT_EQ(record, Describe(ScanAnswers("\x02" + frame + "\x03" + behind))) << frame;
    matched += expected ? 1 : 0;
  }
  EXPECT_GT(matched, 5000);
}

TEST(AnswerParserTest, FindsAValueThatIsNoSetting) {
  EXPECT_EQ("IL", FindAnswerValue("\x02^S(SMA,S,IL\x03", "^S(SMA,S"));
  EXPECT_EQ("PR", FindAnswerValue("x\x02junk\x03\x02^S(SMA,SPR\x03", "^S(SMA,S"));
  EXPECT_EQ("", FindAnswerValue("^S(SMA,S,IL", "^S(SMA,S"));
}

}  // namespace
}  // namespace tavira
