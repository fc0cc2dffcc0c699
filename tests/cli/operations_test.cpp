#include <gmock/gmock.h>

#include "cli_fixture.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class COperationsTest : public CCliTest {};

TEST_F(COperationsTest, WipeLeavesOtherFilesAndSetting42AsTheyWere) {
  WriteIni("[factory]\nCMP,M=R\n");
  StoreOnE("LOGO.PNG", "bytes");
  StoreOnE("LABEL.ZPL", "format");
  const tagRun run = Tvmgr({"op", "wipe-graphics", "--yes"});
  EXPECT_EQ(run.exit_code, 0U) << run.err;
  EXPECT_THAT(run.err, HasSubstr("wipe-graphics: done"));
  EXPECT_EQ(StoredOnE("LOGO.PNG"), "");
  EXPECT_EQ(StoredOnE("LABEL.ZPL"), "format");
  const nlohmann::json rows = Json({"get", "42"})["settings"];
  EXPECT_EQ(rows[0]["value"], "R");
}

TEST_F(COperationsTest, WipeNamesWhatRemained) {
  StoreOnE("LOGO.PNG", "bytes");
  StoreOnE("KEPT.GRF", "bytes");
  HostFile("printer/attributes.txt", "E:KEPT.GRF\n");
  const tagRun run = Tvmgr({"op", "wipe-graphics", "--yes"});
  EXPECT_EQ(run.exit_code, 1U);
  EXPECT_THAT(run.err, HasSubstr("still lists KEPT.GRF ("));
}

TEST_F(COperationsTest, LongWorkIsToldOnStderrUnlessQuiet) {
  WriteIni("[printer]\nmaintenance_ms=2500\n");
  const std::vector<tagRun> runs =
      TvmgrEach({{"op", "media-calibration"}, {"op", "media-calibration", "--quiet"}});
  EXPECT_EQ(runs[0].exit_code, 0U);
  EXPECT_THAT(
      runs[0].err,
      testing::ContainsRegex("running media-calibration \\.\\.\\. \\d+ s .usually until the printer is ready "
                             "again; at most \\d+ min"));
  EXPECT_EQ(runs[0].out, "");
  EXPECT_EQ(runs[1].exit_code, 0U);
  EXPECT_EQ(runs[1].err, "");
}

TEST_F(COperationsTest, SendPassesBytesOfFileTextAndStdinUnchanged) {
  const std::string file = HostFile("d\xC3\xA4ta.bin", "~JA\x01\x1A\r\nEND");
  const struct {
    std::vector<std::string> arguments;
    std::string input;
    std::string logged;
  } cases[] = {
      {{"send", "--file", file}, "", "~JA\\x01\\x1A\\r\\nEND^XA^H(E^XZ"},
      {{"send", "--text", "^FD\xC3\xA4*?^FS"}, "", "^FD\\xE4*?^FS^XA^H(E^XZ"},
      {{"send", "-"}, "one\r\ntwo\x1A", "one\\r\\ntwo\\x1A^XA^H(E^XZ"},
      {{"op", "send-data", "--file", file}, "", "~JA\\x01\\x1A\\r\\nEND^XA^H(E^XZ"},
  };
  for (const auto& sent : cases) {
    std::filesystem::remove(folder_ / "exchanges.log");
    const tagRun run = Tvmgr(sent.arguments, sent.input);
    EXPECT_EQ(run.exit_code, 0U) << run.err;
    EXPECT_THAT(Log(), HasSubstr(sent.logged));
  }
}

TEST_F(COperationsTest, SendLeavesTheResolutionsAloneUnlessAllowed) {
  WriteIni("[factory]\nCLR,Z=300\nCLR,P=300\nCLR,R=300\n");
  EXPECT_EQ(Tvmgr({"send", "--text", "x"}).exit_code, 0U);
  EXPECT_THAT(Log(), Not(HasSubstr("^XA^S(CLR,Z")));
  EXPECT_EQ(Tvmgr({"send", "--text", "x", "--allow-resolution-change"}).exit_code, 0U);
  EXPECT_THAT(Log(), HasSubstr("^XA^S(CLR,Z,600"));
  EXPECT_THAT(Log(), HasSubstr("^XA^S(CLR,Z,300^XZ"));
}

}  // namespace
