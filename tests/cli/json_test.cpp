#include <gmock/gmock.h>
#include <windows.h>

#include "cli_fixture.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class CJsonTest : public CCliTest {};

json Parsed(const tagRun& run) {
  json document = json::parse(run.out, nullptr, false);
  EXPECT_FALSE(document.is_discarded()) << run.out << run.err;
  return document;
}

TEST_F(CJsonTest, EveryCommandThatWritesHasAResult) {
  WriteIni("[faults]\nlatency_ms=0\n");
  StoreOnE("LOGO.PNG", "bytes");
  EXPECT_EQ(Json({"send", "--text", "^XA^XZ"})["bytes"], 6);
  EXPECT_EQ(Json({"op", "none"})["status"], nullptr);
  EXPECT_EQ(Json({"op", "media-calibration"})["status_name"], "idle");
  const std::string label = HostFile("label.zpl", "^FDx^FS");
  EXPECT_EQ(Json({"put", label}), json({{"version", 1},
                                        {"command", "put"},
                                        {"exit_code", 0},
                                        {"error", nullptr},
                                        {"name", "LABEL.ZPL"},
                                        {"bytes", 7},
                                        {"file", label},
                                        {"dry_run", false}}));
  EXPECT_EQ(Json({"fetch", "LOGO.PNG", "-o", Utf8Path("x.png")})["bytes"], 5);
  EXPECT_EQ(Json({"set", "CLM,P=3"})["settings"][0]["reason"], nullptr);
  EXPECT_EQ(Json({"rm", "LOGO.PNG", "--yes"})["files"][0]["removed"], true);
  EXPECT_EQ(Json({"prefix", "--default", "--quiet", "--yes"})["default"], true);
  const std::string backup = Utf8Path("a.bak");
  EXPECT_EQ(Json({"backup", backup})["complete"], true);
  EXPECT_EQ(Json({"backup", "diff", backup, backup})["equal"], true);
  const json restored = Parsed(Tvmgr({"restore", backup, "--yes", "--json"}));
  EXPECT_EQ(restored["error"], nullptr);
  EXPECT_GT(restored["setting_count"], 50);
}

TEST_F(CJsonTest, ErrorsAreObjectsThatNameStepPrinterAndAdvice) {
  WriteIni("[faults]\nfail=SendData:1:-77\n");
  const tagRun refused = Tvmgr({"--port", "USB001", "status", "--json", "--quiet"});
  json document = Parsed(refused);
  json error = document["error"];
  EXPECT_EQ(document["exit_code"], 4);
  EXPECT_EQ(refused.exit_code, 4U);
  EXPECT_EQ(error["code"], -77);
  EXPECT_EQ(error["step"], "asking for the printer's status");
  EXPECT_EQ(error["printer"], json({{"kind", "port"}, {"value", "USB001"}, {"name", nullptr}}));
  EXPECT_THAT(error["advice"].get<std::string>(), HasSubstr("switched on"));
  EXPECT_THAT(refused.err, HasSubstr(error["text"].get<std::string>()));

  // Nobody takes the document.
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  const HANDLE closed = CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                    OPEN_EXISTING, 0, nullptr);
  const tagRun untold =
      RunProgram(ProgramFolder() / "tvmgr.exe", {"codes", "-82", "--json"}, {}, {nullptr, closed});
  CloseHandle(closed);
  EXPECT_EQ(untold.exit_code, 1U);
  EXPECT_EQ(untold.err, "tvmgr: the output cannot be written (disk full, or its reader has ended)\n");

  // What was found out before stands beside the error.
  WriteIni("[printer]\nunanswered=CLM,T\n[faults]\nlatency_ms=0\n");
  document = Parsed(Tvmgr({"get", "CLM,T", "CLR,Z", "--json"}));
  EXPECT_EQ(document["exit_code"], 3);
  EXPECT_EQ(document["settings"][1]["value"], "600");
  EXPECT_EQ(document["error"]["code"], nullptr);
  EXPECT_THAT(document["error"]["advice"].get<std::string>(), HasSubstr("repeat the command"));

  const std::vector<tagRun> usage = TvmgrEach({{"--json"},
                                               {"get", "--json"},
                                               {"set", "--json"},
                                               {"files", "--sort", "name", "--json"},
                                               {"fetch", "LOGO.PNG", "--json"},
                                               {"backup", "check", Utf8Path("none"), "--json"}});
  const std::vector<json> commands = {nullptr, "get", "set", "files", "fetch", "backup check"};
  for (std::size_t i = 0; i < usage.size(); ++i) {
    document = Parsed(usage[i]);
    EXPECT_EQ(document["command"], commands[i]) << usage[i].err;
    EXPECT_EQ(document["error"]["exit_code"], i == 5 ? 5 : 2);
    EXPECT_EQ(document["error"]["printer"], nullptr);
    EXPECT_THAT(document["error"]["advice"].get<std::string>(),
                HasSubstr(i == 5 ? "check the path" : "--help"));
  }
}

}  // namespace
