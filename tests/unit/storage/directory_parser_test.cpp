#include "storage/directory_parser.h"

#include <gtest/gtest.h>

namespace tavira::test {
namespace {

/** A line of the listing: `name` from column 4, `mark` at column 25. */
std::string Line(std::string_view name, char mark = ' ', char device = 'E', std::size_t length = 32) {
  std::string line = std::string("* ") + device + ':';
  line.append(name).resize(length, ' ');
  line[25] = mark;
  return line;
}

/** The name fields without the blanks behind them. */
std::vector<std::string> NamesOf(std::string_view listing) {
  std::vector<std::string> names;
  for (const tagDirectoryEntry& entry : ParseDirectory(listing)) {
    EXPECT_EQ(12U, entry.name_field.size());
    names.emplace_back(entry.name_field.substr(0, entry.name_field.find_last_not_of(' ') + 1));
  }
  return names;
}

using Names = std::vector<std::string>;

TEST(DirectoryParserTest, ReadsNameAndMarkFromTheirColumns) {
  const std::string listing =
      "- DIR E:*.PNG\r\n" + Line("LOGO.PNG") + "\r\n" + Line("A.PNG", 'P') + "\r\n- 99 bytes free on E:\r\n";
  const auto entries = ParseDirectory(listing);
  ASSERT_EQ(2U, entries.size());
  EXPECT_EQ("LOGO.PNG    ", entries[0].name_field);
  EXPECT_FALSE(entries[0].p_mark);
  EXPECT_EQ("A.PNG       ", entries[1].name_field);
  EXPECT_TRUE(entries[1].p_mark);
  EXPECT_FALSE(ParseDirectory(Line("A.PNG", 'p')).at(0).p_mark);
  std::string beside = Line("A.PNG");
  beside[24] = beside[26] = 'P';
  EXPECT_FALSE(ParseDirectory(beside).at(0).p_mark);
}

TEST(DirectoryParserTest, TheNameFieldIsTakenWhole) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"ABCDEFGH.PNG", "ABCDEFGH.PNG"},
      {"ABCDEFGH.PNGX", "ABCDEFGH.PNG"},
      {"A.B", "A.B"},
      {"AB  .PNG", "AB  .PNG"},
      {" A.PNG", " A.PNG"},
      {"", ""},
      {"\xC4\xFF.PNG", "\xC4\xFF.PNG"},
      {"A\tB.PNG", "A\tB.PNG"},
  };
  for (const auto& [field, name] : cases) {
    EXPECT_EQ(Names{std::string(name)}, NamesOf(Line(field))) << field;
  }
}

TEST(DirectoryParserTest, SkipsWhatIsNoFileLineAndGoesOn) {
  const std::string skipped[] = {
      Line("R.PNG", ' ', 'R'),
      Line("LOWER.PNG", ' ', 'e'),
      Line("SHORT.PNG", ' ', 'E', 29),
      "E:MOVED.PNG                      ",
      "x",
  };
  for (const std::string& line : skipped) {
    EXPECT_EQ((Names{"B.PNG", "C.CNV"}),
              NamesOf(Line("B.PNG", ' ', 'E', 30) + "\r\n" + line + "\r\n" + Line("C.CNV", ' ', 'Z')))
        << line;
  }
}

TEST(DirectoryParserTest, AnEmptyLineEndsTheListing) {
  const std::string first = Line("A.PNG");
  const std::string more = Line("B.PNG");
  for (const std::string_view end : {"\r\n\r\n", "\n\n", "\r\r", "\n\r", "\r\n\n", "\r\n\r"}) {
    EXPECT_EQ(Names{"A.PNG"}, NamesOf(first + std::string(end) + more));
  }
  EXPECT_EQ(Names{}, NamesOf("\r\n" + first));
  EXPECT_EQ(Names{}, NamesOf(""));
}

TEST(DirectoryParserTest, EveryKindOfLineEndSeparatesAndCountsForNothing) {
  for (const std::string_view end : {"\r\n", "\n", "\r"}) {
    const std::string short_line = Line("SHORT.PNG", ' ', 'E', 29);
    EXPECT_EQ((Names{"A.PNG", "B.PNG"}), NamesOf(Line("A.PNG") + std::string(end) + short_line +
                                                 std::string(end) + Line("B.PNG") + std::string(end)));
  }
}

TEST(DirectoryParserTest, AMegabyteWithoutALineEndIsOneLine) {
  EXPECT_EQ(Names{"A.PNG"}, NamesOf(Line("A.PNG", ' ', 'E', 1U << 20)));
}

}  // namespace
}  // namespace tavira::test
