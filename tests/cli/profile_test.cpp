#include <gmock/gmock.h>

#include <chrono>
#include <sstream>
#include <thread>

#include "cli_fixture.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class CProfileTest : public CCliTest {
 protected:
  void SetUp() override {
    CCliTest::SetUp();
    WriteIni(kFast);
  }

  std::string Profile(const std::string& settings, const std::string& printer = "{}") const {
    return HostFile("p.json", "// by hand\n{\"format\": \"tvmgr-profile\", \"version\": 1, \"printer\": " +
                                  printer + ",\n\"settings\": {\n" + settings + "\n}}");
  }

  /** "CLM,P written; " for each setting of a result. */
  static std::string Verdicts(const json& document) {
    std::string text;
    for (const json& setting : document["settings"]) {
      text += setting["key"].get<std::string>() + " " + setting["verdict"].get<std::string>() + "; ";
    }
    return text;
  }

  static constexpr char kFast[] = "[faults]\nlatency_ms=0\n";
};

TEST_F(CProfileTest, WhatOnePrinterExportsAnotherTakes) {
  ASSERT_EQ(Tvmgr({"set", "CLM,P=12", "CUL,L=\xC3\xA9\\\\", "INU,N=MINE"}).exit_code, 0U);
  const std::string path = Utf8Path(
      "s\xC3\xBC"
      "d.json");
  const json exported = Json({"export", path});
  EXPECT_EQ(exported["setting_count"], 51);
  EXPECT_THAT(exported["left_out"].get<std::string>(), HasSubstr("INU,N"));
  EXPECT_EQ(Tvmgr({"diff", path, "printer"}).out, "equal: 51 settings\n");
  EXPECT_EQ(Tvmgr({"export", path}).exit_code, 2U) << "it is there, and nobody to ask";
  std::filesystem::remove(folder_ / "printer" / "settings.txt");
  const tagRun diff = Tvmgr({"diff", "printer", path});
  EXPECT_EQ(diff.exit_code, 1U);
  EXPECT_EQ(diff.out,
            "KEY    A   B    VERDICT\n"
            "CLM,P  0   12   differs\n"
            "CUL,L  EN  \xC3\xA9\\\\  differs\n"
            "different; compared: 51 settings\n");
  const tagRun plan = Tvmgr({"apply", path, "--dry-run", "--only", "CLM_P", "CUL"});
  EXPECT_EQ(plan.exit_code, 0U) << plan.err;
  EXPECT_THAT(plan.out, HasSubstr("CLM,P  0    12      -    would be written\n"));
  const tagRun unasked = Tvmgr({"apply", path});
  EXPECT_EQ(unasked.exit_code, 2U);
  EXPECT_THAT(unasked.err, HasSubstr("  CLM,P: now 0, wanted 12\n"));
  EXPECT_EQ(Log().find("^XA^S(CLM,P,12^XZ", Log().rfind("INU,N,MINE")), std::string::npos)
      << "only read so far";
  const json applied = Json({"apply", path, "--yes"});
  EXPECT_EQ(applied["settings"].size(), 51U);
  EXPECT_THAT(Verdicts(applied), HasSubstr("CLM,P written; CLM,S unchanged; "));
  EXPECT_EQ(Tvmgr({"diff", path, "printer"}).exit_code, 0U);
}

TEST_F(CProfileTest, EachSettingHasItsVerdictAndResolutionsComeLast) {
  WriteIni("[printer]\nrefused=CLM,S\npadded=CLS,L:4\nunanswered=CLM,T\n[factory]\nCLR,Z=300\nCLR,P=300\n" +
           std::string(kFast));
  const tagRun run =
      Tvmgr({"apply",
             Profile("\"CLR_Z\": \"200\", \"CLM,P\": \"7\", \"CLM,S\": \"7\", \"CLS,L\": \"5\",\n\"CLM,T\": "
                     "\"1\", \"CLM,D\": \"0\", \"INU,N\": \"X\""),
             "--yes", "--json"});
  EXPECT_EQ(run.exit_code, 1U);
  const json document = json::parse(run.out);
  EXPECT_EQ(Verdicts(document),
            "CLR,Z written; CLM,P written; CLM,S differs; CLS,L differs; CLM,T not readable; CLM,D "
            "unchanged; INU,N left "
            "out; ");
  EXPECT_EQ(document["settings"][3]["got"], "0005");
  EXPECT_EQ(document["error"]["code"], -82);
  EXPECT_THAT(ReadFileBytes(folder_ / "printer" / "settings.txt"), HasSubstr("CLR,Z=200"));
  EXPECT_THAT(ReadFileBytes(folder_ / "printer" / "settings.txt"), HasSubstr("CLR,P=300"));
  EXPECT_EQ(Tvmgr({"apply", Profile("\"INU,N\": \"X\""), "--yes", "--all"}).exit_code, 0U);
}

TEST_F(CProfileTest, NothingIsWrittenOfWhatIsNotSound) {
  const std::string labels = HostFile("l.json",
                                      R"({"format": "tvmgr-labels", "settings": {"CLM,P":
      {"name": "Margin", "unit": "dots", "maximum": 20}, "CLP,M": {"name": "Mode", "values": {"T": "tear off", "C": ""}}}})");
  const std::string good = HostFile(
      "good.json", "{\"format\": \"tvmgr-profile\", \"version\": 1, \"settings\": {\"CLM,P\": \"3\"}}");
  const std::string bad = Profile("\"CLM,P\": \"1\",\n\"CLM,P\": \"2\"");
  const std::string other =
      HostFile("o.json",
               "{\"format\": \"tvmgr-profile\", \"version\": 1, \"printer\": {\"model\": \"LX-1\"}, "
               "\"settings\": {\"CLM,P\": \"33\"}}");
  const struct {
    std::vector<std::string> arguments;
    unsigned exit_code;
    const char* why;
  } cases[] = {
      {{"apply", bad, "--yes"}, 5, "line 5: CLM,P stands in line 4 already"},
      {{"apply", Utf8Path("none"), "--yes"}, 5, "cannot be opened"},
      {{"apply", good, "--only", "CLM_S"}, 2, "has no setting \"CLM_S\""},
      {{"apply", good, "--only", "XYZ"}, 2, "no group \"XYZ\""},
      {{"apply", other, "--yes"}, 1, "came from a printer that called itself LX-1, this one says LX-R4100"},
      {{"apply", other, "--yes", "--labels", labels},
       1,
       "line 1: \"33\" is no value of CLM,P: allowed are whole"},
      {{"set", "CLP,M=X", "--labels", labels}, 2, "allowed are T (tear off), C"},
      {{"set", "CLM,P=1", "--labels", bad}, 5, "these are no labels"},
      {{"diff", good, labels}, 5, "neither a profile nor a backup"},
      {{"export", Utf8Path("none/p.json")}, 1, "cannot be created"},
      {{"restore", good, "--settings", "--files"}, 2, "excludes"}};
  std::vector<std::vector<std::string>> all;
  for (const auto& c : cases) {
    all.push_back(c.arguments);
  }
  const std::vector<tagRun> runs = TvmgrEach(all);
  for (std::size_t i = 0; i < runs.size(); ++i) {
    EXPECT_EQ(runs[i].exit_code, cases[i].exit_code) << i << runs[i].err;
    EXPECT_THAT(runs[i].err, HasSubstr(cases[i].why)) << i;
  }
  EXPECT_EQ(Log().find("^XA^S("), std::string::npos);
  // What the labels say stands in tables and questions.
  const std::vector<tagRun> shown = TvmgrEach({{"get", "CLM,P", "CLP,M", "--labels", labels},
                                               {"set", "CLM,P=5", "--dry-run", "--labels", labels},
                                               {"apply", good, "--labels", labels},
                                               {"get", "CLP,M", "--labels", labels, "--json"}});
  EXPECT_EQ(shown[0].out,
            "ID  KEY    NAME    VALUE\n6   CLM,P  Margin  0 dots\n10  CLP,M  Mode    T (tear off)\n");
  EXPECT_THAT(shown[1].out, HasSubstr("6   CLM,P  Margin  5 dots  0 dots  would be written\n"));
  EXPECT_THAT(shown[2].err, HasSubstr("  CLM,P  Margin: now 0 dots, wanted 3 dots\n"));
  EXPECT_EQ(json::parse(shown[3].out)["settings"][0]["meaning"], "tear off");
  // A prefix character of the printer would begin a command within the value.
  ASSERT_EQ(Tvmgr({"prefix", "--set", "!", "@", ";", "--yes"}).exit_code, 0U);
  const std::string begins = Profile("\"CUL,L\": \"A@B\"");
  for (const tagRun& run : TvmgrEach({{"apply", begins, "--yes"},
                                      {"apply", begins, "--dry-run"},
                                      {"set", "CUL,L=A@B"},
                                      {"set", "CUL,L=A!B", "--dry-run"}})) {
    EXPECT_EQ(run.exit_code, 1U) << run.out;
    EXPECT_THAT(run.err, HasSubstr("nothing was written: the value of CUL,L holds a prefix character"));
  }
  EXPECT_EQ(Tvmgr({"set", "CUL,L=EN"}).exit_code, 0U);
}

TEST_F(CProfileTest, WorkThatEndsEarlyLeavesAVerdictForEachSetting) {
  const std::string path = Profile("\"CLM,P\": \"7\", \"CLM,S\": \"4\", \"CLR,Z\": \"300\"");
  ASSERT_EQ(Tvmgr({"apply", path, "--dry-run"}).exit_code, 0U);
  std::istringstream log(Log());
  int sends = 0;
  for (std::string line; std::getline(log, line);) {
    sends += line.starts_with('#') ? 0 : 1;
  }
  // The port library gives up where the settings are sent.
  WriteIni("[faults]\nlatency_ms=0\nfail=SendData:" + std::to_string(sends + 1) + ":-77\n");
  const tagRun broken = Tvmgr({"apply", path, "--yes", "--json"});
  EXPECT_EQ(broken.exit_code, 4U);
  const char* const verdicts = "CLM,P sent, not proved; CLM,S unchanged; CLR,Z not sent; ";
  EXPECT_EQ(Verdicts(json::parse(broken.out)), verdicts);
  // The printer is switched off as soon as it has them: the process at work is ended by the one that watches it.
  WriteIni(kFast);
  tagRun run;
  {
    const std::jthread work([&] { run = Tvmgr({"apply", path, "--yes", "--json", "--timeout", "1"}); });
    for (int i = 0; i < 6000 && Log().find("^XA^S(CLM,P,7^XZ") == std::string::npos; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    WriteIni("[faults]\nsilent=1\n");
  }
  EXPECT_EQ(run.exit_code, 4U) << run.err;
  const json document = json::parse(run.out);
  EXPECT_EQ(Verdicts(document), verdicts) << run.err;
  EXPECT_EQ(document["settings"][0]["now"], "0");
  EXPECT_THAT(document["error"]["text"].get<std::string>(), HasSubstr("no longer answers"));
  // One that was as wanted is not answered for any more: nobody has seen that it differs.
  WriteIni(kFast);
  {
    const std::size_t logged = Log().size();
    const std::jthread work([&] { run = Tvmgr({"apply", path, "--yes", "--json"}); });
    for (int i = 0; i < 6000 && Log().find("^XA^S(CLR,Z,300^XZ", logged) == std::string::npos; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    WriteIni("[printer]\nunanswered=CLM,S\n[faults]\nlatency_ms=20\n");
  }
  EXPECT_THAT(Verdicts(json::parse(run.out)), HasSubstr("CLM,S not readable; ")) << run.out;
}

TEST_F(CProfileTest, WhatIsNotAnsweredDoesNotTakeAnEarlierProfilesPlace) {
  const std::string path = HostFile("p.json", "earlier");
  WriteIni("[printer]\nunanswered=CLM,T\n" + std::string(kFast));
  const tagRun run = Tvmgr({"export", path, "--yes", "--only", "CLM"});
  EXPECT_EQ(run.exit_code, 3U) << run.out;
  EXPECT_THAT(run.err, HasSubstr("for CLM,T"));
  EXPECT_EQ(ReadFileBytes(path), "earlier");
  EXPECT_THAT(ReadFileBytes(path + ".partial"), HasSubstr("\"CLM,P\": \"0\""));
  EXPECT_EQ(Tvmgr({"diff", path + ".partial", "printer"}).exit_code, 0U);
  WriteIni("[faults]\nsilent=1\n");
  const std::vector<tagRun> silent = TvmgrEach({{"export", path, "--yes"},
                                                {"diff", path + ".partial", "address:127.0.0.77:1"},
                                                {"apply", path + ".partial", "--yes", "--json"}});
  for (const tagRun& each : silent) {
    EXPECT_EQ(each.exit_code, 4U) << each.err;
  }
  EXPECT_EQ(Verdicts(json::parse(silent[2].out)),
            "CLM,P not sent; CLM,S not sent; CLM,D not sent; CLM,F not sent; ");
  EXPECT_EQ(ReadFileBytes(path), "earlier");
}

TEST_F(CProfileTest, PartsOfABackupAreRestoredOneByOne) {
  StoreOnE("A.PNG", AllBytes(300));
  StoreOnE("B.ZPL", "^FDx^FS");
  HostFile("printer/attributes.txt", "E:A.PNG\n");
  WriteIni("[factory]\nCLM,P=12\n" + std::string(kFast));
  const std::string path = Utf8Path("a.bak");
  ASSERT_EQ(Tvmgr({"backup", path}).exit_code, 0U);
  WriteIni("[factory]\nCLM,P=3\n" + std::string(kFast));
  std::filesystem::remove(folder_ / "printer" / "settings.txt");
  StoreOnE("A.PNG", "other");
  StoreOnE("B.ZPL", "other");
  const std::string labels =
      HostFile("l.json", R"({"format": "tvmgr-labels", "settings": {"CLM,P": {"maximum": 5}}})");
  const std::vector<tagRun> plans = TvmgrEach({{"restore", path, "--dry-run"},
                                               {"restore", path, "--settings", "--dry-run", "--json"},
                                               {"restore", path, "--files", "*.ZPL", "--dry-run"},
                                               {"restore", path, "--files", "NONE.PNG"},
                                               {"restore", path, "--files"},
                                               {"restore", path, "--settings", "--yes", "--labels", labels},
                                               {"diff", path, "printer", "--json"}});
  EXPECT_EQ(
      plans[0].out,
      "WHAT   BACKUP  PRINTER  VERDICT\nCLM,P  12      3        differs\nA.PNG  -       -        other "
      "content\n"
      "B.ZPL  -       -        other content\ndifferent; compared: 58 settings, 2 files by their content\n");
  EXPECT_THAT(Verdicts(json::parse(plans[1].out)),
              testing::StartsWith("CLM,P would be written; CLM,S unchanged; "));
  EXPECT_THAT(plans[2].out, HasSubstr("B.ZPL  -       -        other content\n"));
  EXPECT_THAT(plans[3].err, HasSubstr("the backup holds no file \"NONE.PNG\""));
  EXPECT_EQ(plans[5].exit_code, 1U);
  EXPECT_THAT(plans[5].err,
              HasSubstr("the backup holds \"12\", which is no value of CLM,P: allowed are whole"));
  EXPECT_THAT(plans[4].err, HasSubstr("this will store A.PNG, B.ZPL on the printer"));
  EXPECT_EQ(json::parse(plans[6].out)["settings"].size(), 1U);
  EXPECT_EQ(Tvmgr({"restore", path, "--settings", "--yes"}).exit_code, 0U);
  EXPECT_EQ(StoredOnE("A.PNG") + StoredOnE("B.ZPL"), "otherother");
  EXPECT_EQ(Tvmgr({"diff", path, "printer"}).exit_code, 0U);
  const tagRun files = Tvmgr({"restore", path, "--files", "A*", "--yes", "--json"});
  EXPECT_EQ(files.exit_code, 0U) << files.err;
  EXPECT_EQ(json::parse(files.out)["files"], json::parse(R"([{"name":"A.PNG","verdict":"stored and read back",
                             "reason":"its protection was sent, which no printer shows"}])"));
  EXPECT_EQ(StoredOnE("A.PNG"), AllBytes(300)) << "it was protected";
  EXPECT_EQ(StoredOnE("B.ZPL"), "other");
  EXPECT_THAT(ReadFileBytes(folder_ / "printer" / "attributes.txt"), HasSubstr("E:A.PNG"));
  const tagRun put = Tvmgr({"put", HostFile("b.zpl", "^FDy^FS"), "--dry-run", "--json"});
  EXPECT_EQ(json::parse(put.out)["replaces"], true) << put.err;
  EXPECT_EQ(StoredOnE("B.ZPL"), "other");
}

}  // namespace
