#include "command/answer_parser.h"

#include <gtest/gtest.h>

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

// (The rule as it is stated, row by row, on any answer: fuzz/answer_scanner.cpp.)
TEST(AnswerParserTest, FindsAValueThatIsNoSetting) {
  EXPECT_EQ("IL", FindAnswerValue("\x02^S(SMA,S,IL\x03", "^S(SMA,S"));
  EXPECT_EQ("PR", FindAnswerValue("x\x02junk\x03\x02^S(SMA,SPR\x03", "^S(SMA,S"));
  EXPECT_EQ("", FindAnswerValue("^S(SMA,S,IL", "^S(SMA,S"));
}

}  // namespace
}  // namespace tavira
