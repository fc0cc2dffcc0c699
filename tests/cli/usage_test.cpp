#include <gmock/gmock.h>
#include <windows.h>

#include <algorithm>

#include "cli_fixture.h"
#include "tavira/TaviraManager.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

class CUsageTest : public CCliTest {};

TEST_F(CUsageTest, WrongUsageEndsWithTwoSaysWhyAndSendsNothing) {
  const std::string file = HostFile("label.zpl", "^XA^XZ");
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{}, "tvmgr: name a command"},
      {{"nonsense"}, "no command \"nonsense\""},
      {{"--nonsense"}, "no option \"--nonsense\""},
      {{"get"}, "--all"},
      {{"get", "CLR,Q"}, "CLR,Q"},
      {{"get", "30"}, "\"30\""},
      {{"get", "3", "--all"}, "--all"},
      {{"set", "CLM,P"}, "KEY=VALUE"},
      {{"set", "6=1", "CLM,P=2"}, "two values for CLM,P"},
      {{"set", "CLM,P=1^XZ"}, "tvmgr send"},
      {{"set", "CCC,T=!"}, "prefix --set"},
      {{"get", "3", "--columns", "id,unit"}, "no column \"unit\"; the table has: ID, KEY, NAME, VALUE"},
      {{"set", "CLM,P=1", "--sort", "size"}, "VERDICT, REASON"},
      {{"files", "--sort", "name:up"}, "no column \"name:up\""},
      {{"get", "3", "--columns", "name,value"}, "no column \"NAME\" without --labels"},
      {{"set", "3=300", "--sort", "name"}, "no column \"NAME\" without --labels"},
      {{"op", "head-check", "--columns", "operation"}, "no table without --list"},
      {{"fetch", "A.PNG", "-o", "a.png", "--sort", "name"}, "no table without a pattern"},
      {{"restore", file, "--settings", "--columns", "key,what"}, "no column \"WHAT\" with --settings"},
      {{"prefix", "--set", "!", "@"}, "--set"},
      {{"prefix", "--set", "!", "!", ";"}, "differ"},
      {{"prefix", "--set", "a", "@", ";"}, "\"a\""},
      {{"status", "--count", "2"}, "--watch"},
      {{"status", "--timeout", "nan"}, "nan is no number"},
      {{"op", "explode"}, "explode"},
      {{"op", "send-data"}, "--file"},
      {{"op", "head-check", "--text", "x"}, "send-data"},
      {{"send", "--text", "a", "-"}, "once"},
      {{"send", "--text", "\xE2\x99\xA5"}, "code page"},
      {{"files", "--list", "exe"}, "exe"},
      {{"rm", "R:*.PNG", "--yes"}, "device E: only"},
      {{"rm", "TOOLONGNAME.PNG", "--yes"}, "TOOLONGNAME"},
      {{"put", file, "--kind", "font"}, "font"},
      {{"put", file, "--name", "OTHER.BGD"}, "KORVDEF.BGD"},
      {{"backup"}, "FILE"},
      {{"backup", "x.bak", "--sections", "settings,labels"}, "labels"},
      {{"backup", "check"}, "file"},
      {{"backup", "check", file, "b.bak"}, "too many"},
      {{"backup", "diff", file, file, "--yes"}, "belong to"},
      {{"backup", "diff", file}, "b is required"},
      {{"restore"}, "file"},
      {{"search"}, "kind"},
      {{"search", "serial"}, "serial"},
      {{"use", "3"}, "no printer 3"},
      {{"use", "0"}, "no printer 0"},
      {{"use", "USB001", "--clear"}, "--clear"},
      {{"use", "--as", "port"}, "--as"},
      {{"--device", "x", "--address", "y", "status"}, "--device x and --address y name two"},
  };
  std::vector<std::vector<std::string>> all;
  for (const auto& [arguments, why] : cases) {
    all.push_back(arguments);
  }
  const std::vector<tagRun> runs = TvmgrEach(all);
  for (std::size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(runs[i].exit_code, 2U) << testing::PrintToString(all[i]) << runs[i].err;
    EXPECT_THAT(runs[i].err, AllOf(StartsWith("tvmgr: "), HasSubstr(cases[i].second)));
    EXPECT_EQ(runs[i].out, "");
  }
  // What changes a printer is not done to any that happens to be there.
  SetEnvironmentVariableW(L"TVMGR_DEVICE", nullptr);
  const std::vector<tagRun> writing = TvmgrEach({{"set", "CLM,P=1"},
                                                 {"put", file},
                                                 {"rm", "A.PNG", "--yes"},
                                                 {"op", "head-check"},
                                                 {"restore", file, "--yes"},
                                                 {"send", "--text", "x"},
                                                 {"prefix", "--default", "--yes"}});
  for (const tagRun& run : writing) {
    EXPECT_EQ(run.exit_code, 2U);
    EXPECT_THAT(run.err, AllOf(HasSubstr("no printer is chosen"), HasSubstr("tvmgr use")));
  }
  EXPECT_EQ(Log(), "");
}

TEST_F(CUsageTest, EveryTableCanBeCutToTheColumnsThatItHas) {
  WriteIni("[faults]\nlatency_ms=0\n");
  StoreOnE("LOGO.PNG", "bytes");
  const std::vector<std::vector<std::string>> tables = {
      {"get", "CLR,Z"}, {"files"}, {"ports"}, {"op", "--list"}, {"backup", "coverage"}, {"set", "CLM,P=1"}};
  const std::vector<tagRun> runs = TvmgrEach(tables);
  std::vector<std::vector<std::string>> cut = tables;
  for (std::size_t i = 0; i < tables.size(); ++i) {
    std::string columns = runs[i].out.substr(0, runs[i].out.find('\n'));
    for (std::size_t gap = columns.find("  "); gap != std::string::npos; gap = columns.find("  ")) {
      columns.replace(gap, columns.find_first_not_of(' ', gap) - gap, ",");
    }
    cut[i].insert(cut[i].end(), {"--columns", columns});
  }
  const std::vector<tagRun> again = TvmgrEach(cut);
  for (std::size_t i = 0; i < tables.size(); ++i) {
    EXPECT_EQ(again[i].exit_code, 0U) << again[i].err;
    EXPECT_EQ(again[i].out, runs[i].out);
  }
}

TEST_F(CUsageTest, HelpNamesEveryCommandAndEachHasExamples) {
  const std::vector<std::string> commands = {
      "search", "use",   "info", "ports", "status", "get",    "set",     "prefix", "codes",      "op",
      "files",  "fetch", "put",  "rm",    "send",   "backup", "restore", "doctor", "completions"};
  std::vector<std::vector<std::string>> all{{"--help"}};
  for (const std::string& command : commands) {
    all.push_back({command, "--help"});
  }
  const std::vector<tagRun> runs = TvmgrEach(all);
  for (std::size_t i = 0; i < commands.size(); ++i) {
    EXPECT_THAT(runs.front().out, HasSubstr("\n  " + commands[i] + "  "));
    EXPECT_EQ(runs[i + 1].exit_code, 0U);
    EXPECT_THAT(runs[i + 1].out, HasSubstr("\n  tvmgr " + commands[i])) << "no example";
    EXPECT_EQ(runs[i + 1].err, "");
  }
}

TEST_F(CUsageTest, CommandsWithoutPrinterWork) {
  const tagRun version = Tvmgr({"--version"});
  EXPECT_EQ(version.exit_code, 0U);
  EXPECT_EQ(version.out, "tvmgr " + std::to_string(TVMGR_VERSION_MAJOR) + "." +
                             std::to_string(TVMGR_VERSION_MINOR) + "." + std::to_string(TVMGR_VERSION_PATCH) +
                             "\n");

  const nlohmann::json codes = Json({"codes"})["codes"];
  const auto unreadable =
      std::find_if(codes.begin(), codes.end(), [](const auto& code) { return code["code"] == -5; });
  ASSERT_NE(unreadable, codes.end());
  EXPECT_THAT((*unreadable)["advice"].get<std::string>(), HasSubstr("beside TaviraManager.dll"));

  EXPECT_TRUE(Json({"ports"})["ports"].is_array());
  EXPECT_THAT(Json({"completions", "bash"})["script"].get<std::string>(), HasSubstr("complete -o"));

  const nlohmann::json operations = Json({"op", "--list"})["operations"];
  EXPECT_EQ(operations.size(), 13U);
  for (const auto& operation : operations) {
    const auto name = operation["name"].get<std::string>();
    const bool destroys =
        name.find("wipe") == 0 || name.find("reset") != std::string::npos || name == "initialize-memory";
    EXPECT_EQ(operation["confirm"], destroys) << name;
  }
}

}  // namespace
