#include <gmock/gmock.h>

#include <set>

#include "cli_fixture.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

class CSettingsTest : public CCliTest {};

const json* FindSetting(const json& rows, int id) {
  for (const json& row : rows) {
    if (row["id"] == id) {
      return &row;
    }
  }
  return nullptr;
}

TEST_F(CSettingsTest, GetShowsTheNamedSettingsInTheOrderAsked) {
  WriteIni("[answers]\nINU,S=A\036B\\\xE9\n[factory]\nCLR,Z=300\n[printer]\nunanswered=CLM,T\n");
  const std::vector<tagRun> runs = TvmgrEach({{"get", "inu_s", "3", "CLM,T"}, {"get", "INU,S", "--json"}});
  const tagRun& run = runs[0];
  EXPECT_EQ(run.exit_code, 3U);
  EXPECT_EQ(run.out,
            "ID  KEY    VALUE\n"
            "79  INU,S  A\\x1EB\\\\\xC3\xA9\n"
            "3   CLR,Z  300\n"
            "9   CLM,T  not answered\n");
  EXPECT_THAT(run.err, HasSubstr("no value for CLM,T"));

  EXPECT_EQ(runs[1].exit_code, 0U);
  EXPECT_EQ(json::parse(runs[1].out),
            json::parse(R"({"version":1,"command":"get","exit_code":0,"error":null,"settings":[{"id":79,
                "key":"INU,S","name":null,"value":"A\u001eB\\é","meaning":null,"hex":"411E425CE9","size":null,"guard":false}]})"));
}

TEST_F(CSettingsTest, GetAllListsEverySettingOnce) {
  WriteIni("[printer]\nunanswered=CLM,T\n[factory]\nCMP,U=E\n");
  StoreOnE("KORVDEF.BGD", "12345");
  const tagRun run = Tvmgr({"get", "--all", "--json"});
  EXPECT_EQ(run.exit_code, 3U) << run.err;
  EXPECT_THAT(run.err, HasSubstr("no value for CLM,T: look at the printer"));
  const json rows = json::parse(run.out)["settings"];
  EXPECT_EQ(rows.size(), 78U);
  std::set<std::string> keys;
  std::set<int> unanswered;
  for (const json& row : rows) {
    keys.insert(row["key"].get<std::string>());
    if (row["value"].is_null() && row["size"].is_null()) {
      unanswered.insert(row["id"].get<int>());
    }
  }
  EXPECT_EQ(keys.size(), 78U);
  EXPECT_EQ(unanswered, (std::set<int>{9, 46}));
  ASSERT_NE(FindSetting(rows, 37), nullptr);
  EXPECT_EQ((*FindSetting(rows, 37))["size"], 5);
  EXPECT_EQ((*FindSetting(rows, 84))["value"], "D") << "the guard's";
  EXPECT_EQ((*FindSetting(rows, 84))["guard"], true);
}

TEST_F(CSettingsTest, SetWritesSavesAndVerifies) {
  const tagRun run = Tvmgr({"set", "clm,p=12", "INU,S=Laden=1", "46=0102", "CPC,Y=1"});
  EXPECT_EQ(run.exit_code, 3U) << run.err;
  EXPECT_THAT(run.out, HasSubstr("6   CLM,P  12       12       written\n"));
  EXPECT_THAT(run.out, HasSubstr("79  INU,S  Laden=1  Laden=1  written\n"));
  EXPECT_THAT(run.out, HasSubstr("46  ST     0102     -        not readable"));
  EXPECT_THAT(run.out, HasSubstr("74  CPC,Y  1        1        written"));
  // Read by another process, so it was saved.
  const json rows = Json({"get", "CLM,P"})["settings"];
  EXPECT_EQ(rows[0]["value"], "12");
}

TEST_F(CSettingsTest, SetTellsForEachSettingWhyItIsNotConfirmed) {
  WriteIni(
      "[printer]\nrefused=CLM,S "
      "CLR,Z\nunanswered=CLM,T\nupper_case_values=1\npadded=CLS,L:4\n[factory]\nCLR,P=300\n[faults]\nlatency_"
      "ms=0\n");
  const tagRun run =
      Tvmgr({"set", "CLM,S=7", "CLM,T=1", "CLR,Z=300", "CLS,L=5", "INU,S=abc", "CMP,U=E", "--json"});
  EXPECT_EQ(run.exit_code, 1U);
  EXPECT_THAT(run.err, HasSubstr("-82"));
  EXPECT_THAT(run.err, testing::ContainsRegex("about pass \\d+ of 10: the printer does not show it yet"));
  const json rows = json::parse(run.out)["settings"];
  const struct {
    int id;
    std::string verdict;
    std::string reason;
  } cases[] = {{7, "differs", "refused"},
               {9, "not readable", "does not answer"},
               {3, "differs", "guard"},
               {15, "differs", "another form"},
               {79, "written", ""},
               {84, "cannot be proved here", "op send-data --text \"^XA^S(CMP,U,E^XZ^XA^JUS^XZ\""}};
  for (const auto& expected : cases) {
    const json* const row = FindSetting(rows, expected.id);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ((*row)["verdict"], expected.verdict) << expected.id;
    EXPECT_THAT((*row)["reason"].is_null() ? "" : (*row)["reason"].get<std::string>(),
                HasSubstr(expected.reason));
  }
  EXPECT_EQ((*FindSetting(rows, 15))["got"], "0005");
  EXPECT_TRUE((*FindSetting(rows, 9))["got"].is_null());
}

TEST_F(CSettingsTest, ModeIsProvedWhereTheGuardIsIdleAndWrittenPastItElsewhere) {
  WriteIni("[faults]\nlatency_ms=0\n");
  EXPECT_EQ(Tvmgr({"set", "CMP,U=E"}).exit_code, 0U) << "all resolutions 600, mode D";
  EXPECT_THAT(ReadFileBytes(folder_ / "printer" / "settings.txt"), HasSubstr("CMP,U=E"));
  EXPECT_THAT(Tvmgr({"get", "84"}).out, HasSubstr("D  (perhaps the guard's)"));
  const tagRun back = Tvmgr({"set", "CMP,U=D"});
  EXPECT_EQ(back.exit_code, 3U) << back.out;
  EXPECT_THAT(ReadFileBytes(folder_ / "printer" / "settings.txt"), HasSubstr("CMP,U=E"));
  EXPECT_EQ(Tvmgr({"op", "send-data", "--text", "^XA^S(CMP,U,D^XZ^XA^JUS^XZ"}).exit_code, 0U);
  EXPECT_THAT(ReadFileBytes(folder_ / "printer" / "settings.txt"), HasSubstr("CMP,U=D"));
}

TEST_F(CSettingsTest, KeepResolutionWritesAResolutionThatTheGuardWouldPutBack) {
  WriteIni("[factory]\nCLR,Z=300\nCLR,P=300\nCLR,R=300\n[faults]\nlatency_ms=0\n");
  const tagRun run = Tvmgr({"set", "--keep-resolution", "CLR,Z=200"});
  EXPECT_EQ(run.exit_code, 0U) << run.out << run.err;
  EXPECT_THAT(run.out, HasSubstr("3   CLR,Z  200    200  written\n"));
  EXPECT_THAT(Log(), HasSubstr("^XA^S(CLR,Z,200^XZ"));
}

}  // namespace
