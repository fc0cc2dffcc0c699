#include <gmock/gmock.h>

#include <algorithm>

#include "cli_fixture.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

class CStatusTest : public CCliTest {};

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    lines.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return lines;
}

TEST_F(CStatusTest, EachStateHasItsWordAndUnknownFails) {
  const struct {
    std::string ini;
    int status;
    std::string word;
    unsigned exit_code;
  } cases[] = {{"", 1, "idle", 0},
               {"[printer]\nstate=PR\n", 2, "busy", 0},
               {"[printer]\noff_line=1\n", 2, "busy", 0},
               {"[printer]\nstate=ILX\n", 3, "other", 0},
               {"[faults]\ncut_at=1\n", 0, "unknown", 4}};
  for (const auto& expected : cases) {
    WriteIni(expected.ini);
    const std::vector<tagRun> runs = TvmgrEach({{"status"}, {"status", "--json"}});
    EXPECT_THAT(runs[0].out, StartsWith(expected.word + " ("));
    EXPECT_EQ(json::parse(runs[1].out)["status"], expected.status);
    EXPECT_EQ(runs[0].exit_code, expected.exit_code) << expected.ini;
    EXPECT_EQ(runs[1].exit_code, expected.exit_code) << expected.ini;
  }
}

TEST_F(CStatusTest, WatchPrintsALineForEachPollOrForEachChange) {
  const tagRun polls = Tvmgr({"status", "--watch", "--every-poll", "--count", "3", "--interval", "0.05"});
  EXPECT_EQ(polls.exit_code, 0U);
  const std::vector<std::string> lines = Lines(polls.out);
  ASSERT_EQ(lines.size(), 3U) << polls.out;
  for (const std::string& line : lines) {
    EXPECT_THAT(line, testing::ContainsRegex("^\\d+-\\d+-\\d+ \\d+:\\d+:\\d+\\.\\d+  idle"));
  }

  // A refused connection is a state like others.
  WriteIni("[faults]\nfail=Initialize:2:-1011\n");
  const tagRun refused = Tvmgr({"status", "--watch", "--count", "3", "--interval", "0.05"});
  EXPECT_EQ(refused.exit_code, 0U) << refused.err;
  const std::vector<std::string> states = Lines(refused.out);
  ASSERT_EQ(states.size(), 3U) << refused.out;
  EXPECT_THAT(states[1], testing::AllOf(HasSubstr("unknown"), HasSubstr("connection refused")));
  EXPECT_THAT(states[2], HasSubstr("idle"));

  WriteIni("[printer]\nbusy_ms=700\n");
  const tagRun changes = Tvmgr({"status", "--watch", "--for", "1.5", "--interval", "0.1", "--json"});
  EXPECT_EQ(changes.exit_code, 0U);
  std::vector<std::string> names;
  for (const std::string& line : Lines(changes.out)) {
    names.push_back(json::parse(line)["status_name"].get<std::string>());
  }
  EXPECT_EQ(names, (std::vector<std::string>{"busy", "idle"}));
}

}  // namespace
