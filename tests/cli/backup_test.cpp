#include <gmock/gmock.h>

#include "cli_fixture.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

class CBackupTest : public CCliTest {
 protected:
  /** The printer as it came from the factory: everything that it remembers is gone. */
  void ForgetEverything() const {
    for (const auto& entry : fs::directory_iterator(folder_ / "printer")) {
      if (entry.path().filename() != "printer.ini") {
        fs::remove_all(entry.path());
      }
    }
  }

  void Protect(const std::string& name) const { HostFile("printer/attributes.txt", "E:" + name + "\n"); }
};

TEST_F(CBackupTest, RestoredPrinterEqualsTheOneThatWasBackedUp) {
  const std::string picture = AllBytes(5000);
  StoreOnE("LOGO.PNG", picture);
  StoreOnE("FONT.TTE", "font");
  StoreOnE("LABEL.ZPL", "^FO1,1^FDx^FS");
  StoreOnE("KORVDEF.BGD", "background");
  Protect("LOGO.PNG");
  ASSERT_EQ(Tvmgr({"set", "CLM,P=12", "INU,S=Laden \xC3\xA9"}).exit_code, 0U);
  ASSERT_EQ(Tvmgr({"prefix", "--set", "!", "@", ";", "--yes"}).exit_code, 0U);
  const std::string first = Utf8Path(
      "erste S\xC3\xBC"
      "d.bak");
  const tagRun backup = Tvmgr({"backup", first});
  ASSERT_EQ(backup.exit_code, 0U) << backup.err;
  EXPECT_THAT(backup.out, HasSubstr(first + ": complete, made "));
  EXPECT_THAT(backup.out, HasSubstr(", sections SITFB, 55 settings, 4 files, "));

  const json check = Json({"backup", "check", first});
  EXPECT_EQ(check["complete"], true);
  EXPECT_EQ(check["prefix"], json::parse(R"({"control":"!","format":"@","delimiter":";"})"));
  EXPECT_EQ(check["files"][0],
            json::parse(R"({"name":"LOGO.PNG","section":"I","stored_bytes":5000,"backup_bytes":6703,
                            "protected":true})"));
  EXPECT_EQ(check["files"][1]["stored_bytes"], nullptr) << "the command of a format does not tell it";

  ForgetEverything();
  const tagRun restore = Tvmgr({"restore", first, "--yes"});
  EXPECT_EQ(restore.exit_code, 0U) << restore.out << restore.err;
  EXPECT_EQ(restore.out, "equal: 58 settings, 4 files by their content\n");
  EXPECT_THAT(restore.err, HasSubstr("4 files"));
  EXPECT_THAT(restore.err, HasSubstr("files: LOGO.PNG, LABEL.ZPL, FONT.TTE, KORVDEF.BGD\n"));
  EXPECT_EQ(StoredOnE("LOGO.PNG"), picture);

  const std::string second = Utf8Path("second.bak");
  ASSERT_EQ(Tvmgr({"backup", second}).exit_code, 0U);
  const tagRun diff = Tvmgr({"backup", "diff", first, second});
  EXPECT_EQ(diff.exit_code, 0U) << diff.out;
  EXPECT_THAT(diff.out, HasSubstr("\nequal\n"));
}

TEST_F(CBackupTest, DiffShowsWhatChanged) {
  StoreOnE("A.PNG", "1");
  StoreOnE("B.PNG", "1");
  const std::string first = Utf8Path("a.bak");
  const std::string second = Utf8Path("b.bak");
  ASSERT_EQ(Tvmgr({"backup", first}).exit_code, 0U);
  WriteIni("[answers]\nCLM,P=77\n");
  StoreOnE("B.PNG", "2");
  StoreOnE("C.PNG", "1");
  fs::remove(folder_ / "printer" / "E" / "A.PNG");
  Protect("B.PNG");
  ASSERT_EQ(Tvmgr({"backup", second}).exit_code, 0U);
  const std::string cut = HostFile("cut.bak", ReadFileBytes(HostPath("a.bak")).substr(0, 1200));
  const std::string foreign = HostFile("label.zpl", "^XA^XZ");
  const std::vector<tagRun> runs = TvmgrEach({{"backup", "diff", first, second},
                                              {"backup", "diff", first, second, "--json"},
                                              {"backup", "diff", cut, cut},
                                              {"backup", "check", cut},
                                              {"backup", "diff", first, foreign},
                                              {"backup", "check", foreign},
                                              {"backup", "check", Utf8Path("none")}});
  EXPECT_EQ(runs[0].exit_code, 1U);
  EXPECT_THAT(runs[0].out, HasSubstr("SETTING  A  B\nCLM,P    0  77\n"
                                     "FILE   DIFFERENCE\n"
                                     "A.PNG  only in A\n"
                                     "B.PNG  other bytes, other attribute\n"
                                     "C.PNG  only in B\n"
                                     "different\n"));
  EXPECT_EQ(runs[1].exit_code, 1U);
  const json difference = json::parse(runs[1].out);
  EXPECT_EQ(difference["settings"], json::parse(R"([{"key":"CLM,P","a":"0","b":"77"}])"));
  EXPECT_EQ(difference["files"][0]["b_bytes"], nullptr);
  EXPECT_EQ(runs[2].exit_code, 3U) << "a cut file is not known to be equal to anything";
  EXPECT_EQ(runs[3].exit_code, 1U);
  EXPECT_THAT(runs[3].out, HasSubstr("NOT complete"));
  for (std::size_t i = 4; i < runs.size(); ++i) {
    EXPECT_EQ(runs[i].exit_code, 5U) << runs[i].out << runs[i].err;
  }
}

TEST_F(CBackupTest, SectionsAreChosenByNameAndLetter) {
  StoreOnE("A.PNG", "1");
  StoreOnE("B.ZPL", "1");
  const struct {
    std::string list;
    std::string sections;
    int settings;
    int files;
  } cases[] = {
      {"Settings", "S", 55, 0}, {"graphics,T", "IT", 0, 2}, {"cp", "CP", 0, 0}, {"fonts,B", "FB", 0, 0}};
  std::vector<std::vector<std::string>> all;
  for (const auto& chosen : cases) {
    all.push_back({"backup", Utf8Path(chosen.sections + ".bak"), "--sections", chosen.list, "--json"});
  }
  const std::vector<tagRun> runs = TvmgrEach(all);
  for (std::size_t i = 0; i < runs.size(); ++i) {
    ASSERT_EQ(runs[i].exit_code, 0U) << runs[i].err;
    const json summary = json::parse(runs[i].out);
    EXPECT_EQ(summary["sections"], cases[i].sections);
    EXPECT_EQ(summary["setting_count"], cases[i].settings);
    EXPECT_EQ(summary["file_count"], cases[i].files);
  }
}

TEST_F(CBackupTest, EarlierBackupIsNotLost) {
  const std::string path = HostFile("a.bak", "earlier");
  WriteIni("[faults]\nsilent=1\n");
  EXPECT_EQ(Tvmgr({"backup", path, "--yes"}).exit_code, 4U);
  WriteIni("[faults]\ncut_at=1\nlatency_ms=0\n");
  EXPECT_EQ(Tvmgr({"backup", path, "--yes", "--no-check"}).exit_code, 4U);
  EXPECT_EQ(ReadFileBytes(HostPath("a.bak")), "earlier");
  EXPECT_FALSE(fs::exists(HostPath("a.bak.partial"))) << "nothing was written to it";
}

TEST_F(CBackupTest, WhatThePrinterDidNotDeliverStaysBesideTheEarlierBackup) {
  StoreOnE("A.PNG", AllBytes(100));
  const std::string path = HostFile("a.bak", "earlier");
  // The answers count from the status: the guard's, the settings, eight lists, the reload, the file.
  const struct {
    std::string ini;
    unsigned exit_code;
    std::string why;
  } cases[] = {{"[printer]\nunanswered=CLM,T CCC,C\n", 3, "no value for CLM,T CCC,C\n"},
               {"[faults]\ncut_at=600\n", 3, "no value for"},
               {"[faults]\ncut_at=1\ncut_from=4\n", 4, "no longer answers"},
               {"[faults]\ncut_at=40\ncut_from=13\n", 1, "A.PNG: its data is cut off"}};
  for (const auto& failing : cases) {
    WriteIni(failing.ini);
    const tagRun run = Tvmgr({"backup", path, "--yes"});
    EXPECT_EQ(run.exit_code, failing.exit_code) << failing.ini << run.out << run.err;
    EXPECT_THAT(run.err, HasSubstr(failing.why));
    EXPECT_THAT(run.err, HasSubstr("a.bak.partial"));
    EXPECT_EQ(ReadFileBytes(HostPath("a.bak")), "earlier");
    EXPECT_THAT(ReadFileBytes(HostPath("a.bak.partial")), HasSubstr("^XA^S(CLM,P,0^XZ"));
  }
  WriteIni("");
  EXPECT_EQ(Tvmgr({"backup", path, "--yes"}).exit_code, 0U);
  EXPECT_THAT(ReadFileBytes(HostPath("a.bak")), HasSubstr("^XA^S(CLM,P,0^XZ"));
  EXPECT_FALSE(fs::exists(HostPath("a.bak.partial")));
}

TEST_F(CBackupTest, UnwritableTargetIsFoundBeforeThePrinterIsRead) {
  fs::create_directories(HostPath("folder"));
  fs::create_directories(HostPath("b.bak.partial"));
  for (const auto& [path, why] : {std::pair(Utf8Path("folder"), "is a folder"),
                                  {Utf8Path("b.bak"), "cannot be created"},
                                  {Utf8Path("none/a.bak"), "cannot be created"}}) {
    const tagRun run = Tvmgr({"backup", path, "--yes"});
    EXPECT_EQ(run.exit_code, 1U);
    EXPECT_THAT(run.err, HasSubstr(why));
  }
  EXPECT_EQ(Log(), "");
}

TEST_F(CBackupTest, FailureHalfWayIsReportedWithWhatTheFileHolds) {
  StoreOnE("A.PNG", "1");
  WriteIni("[faults]\nlatency_ms=0\n");
  ASSERT_EQ(Tvmgr({"backup", Utf8Path("all.bak")}).exit_code, 0U);
  const std::string log = Log();
  std::size_t sends = 0;
  for (std::size_t at = log.find("^H(YE:A.PNG"); at != std::string::npos && at > 0; --at) {
    sends += log[at] == '\n' && log[at + 1] != '#' ? 1U : 0U;
  }
  ASSERT_GT(sends, 0U);
  WriteIni("[faults]\nfail=SendData:" + std::to_string(sends) + ":-77\nlatency_ms=0\n");
  const tagRun run = Tvmgr({"backup", Utf8Path("half.bak")});
  EXPECT_EQ(run.exit_code, 4U);
  EXPECT_THAT(run.err, HasSubstr("not complete"));
  EXPECT_THAT(run.err, HasSubstr("-77"));
  EXPECT_FALSE(fs::exists(HostPath("half.bak")));
  EXPECT_EQ(Json({"backup", "check", Utf8Path("half.bak.partial")})["file_count"], 0) << "closed properly";
}

TEST_F(CBackupTest, RestoreRefusesWhatIsNoWholeBackup) {
  const std::string good = Utf8Path("good.bak");
  ASSERT_EQ(Tvmgr({"backup", good}).exit_code, 0U);
  const std::string bytes = ReadFileBytes(HostPath("good.bak"));
  const std::string cut = HostFile("cut.bak", bytes.substr(0, bytes.size() - 12));
  const std::string foreign = HostFile("foreign.prn", "^XA^FDlabel^FS^XZ^XA^H(E^XZ");
  const std::string empty = HostFile("empty.bak", "");
  fs::remove(folder_ / "exchanges.log");
  const struct {
    std::vector<std::string> arguments;
    unsigned exit_code;
    std::string why;
  } cases[] = {{{"restore", good}, 2, "--yes"},
               {{"restore", cut, "--yes"}, 1, "trailer is missing"},
               {{"restore", foreign, "--yes"}, 5, "no backup file"},
               {{"restore", empty, "--yes", "--force"}, 5, "empty"},
               {{"restore", Utf8Path("none.bak"), "--yes"}, 5, "cannot be opened"}};
  for (const auto& refused : cases) {
    const tagRun run = Tvmgr(refused.arguments);
    EXPECT_EQ(run.exit_code, refused.exit_code);
    EXPECT_THAT(run.err, HasSubstr(refused.why));
    EXPECT_EQ(run.out, "");
  }
  EXPECT_EQ(Log(), "");

  const tagRun forced = Tvmgr({"restore", foreign, "--yes", "--force"});
  EXPECT_EQ(forced.exit_code, 3U) << forced.err;
  EXPECT_THAT(forced.out, HasSubstr("nothing to compare"));
  EXPECT_THAT(Log(), HasSubstr("^XA^FDlabel^FS^XZ"));
}

TEST_F(CBackupTest, RestoreTellsWhatThePrinterDidNotTake) {
  StoreOnE("BIG.PNG", AllBytes(500));
  const std::string path = Utf8Path("a.bak");
  WriteIni("[factory]\nCLM,P=12\nCLM,S=7\n");
  ASSERT_EQ(Tvmgr({"backup", path}).exit_code, 0U);
  ForgetEverything();
  WriteIni("[printer]\nrefused=CLM,P\nunanswered=CLM,T\ndevice_capacity=400\n");
  const tagRun run = Tvmgr({"restore", path, "--yes"});
  EXPECT_EQ(run.exit_code, 1U);
  EXPECT_EQ(run.out,
            "WHAT     BACKUP  PRINTER  VERDICT\n"
            "CLM,P    12      0        differs\n"
            "CLM,T    120     -        not answered\n"
            "BIG.PNG  -       -        not listed\n"
            "different; compared: 58 settings, 0 files by their content\n");
  const tagRun as_json = Tvmgr({"restore", path, "--yes", "--json", "--quiet"});
  EXPECT_EQ(json::parse(as_json.out)["differences"][0],
            json::parse(R"({"subject":"CLM,P","backup":"12","printer":"0","verdict":"differs"})"));
}

TEST_F(CBackupTest, RestoreComparesOnlyWhatTheFileHoldsAndWhatCanBeReadBack) {
  StoreOnE("A.PNG", AllBytes(500));
  const std::string good = Utf8Path("good.bak");
  ASSERT_EQ(Tvmgr({"backup", good}).exit_code, 0U);
  std::string bytes = ReadFileBytes(HostPath("good.bak"));
  bytes.replace(bytes.find("(CLM,T,120^XZ"), 13, "(CLM,T,^XZ");
  const std::string gap = HostFile("gap.bak", bytes);

  const tagRun refused = Tvmgr({"restore", gap, "--yes"});
  EXPECT_EQ(refused.exit_code, 1U);
  EXPECT_THAT(refused.err, HasSubstr("without a value in this backup: CLM,T\n"));
  const tagRun forced = Tvmgr({"restore", gap, "--yes", "--force"});
  EXPECT_EQ(forced.exit_code, 3U) << forced.err;
  EXPECT_EQ(forced.out,
            "equal: 57 settings, 1 files by their content; 1 settings have no value in the backup; the file "
            "is not a complete backup\n");
  // A download in a form that cannot be read here: the printer lists the file, and that is all that is known.
  bytes = ReadFileBytes(HostPath("good.bak"));
  bytes.replace(bytes.find("A.PNG,B,P"), 9, "A.PNG,A,P");
  const tagRun listed = Tvmgr({"restore", HostFile("form.bak", bytes), "--yes", "--force"});
  EXPECT_EQ(listed.exit_code, 3U) << listed.out << listed.err;
  EXPECT_THAT(listed.out, HasSubstr("A.PNG  -       -        listed, content not compared\n"));
  EXPECT_THAT(listed.out, HasSubstr("0 files by their content, 1 files by their name only; the file is not"));
  // A file that finds no room leaves the earlier one, under the same name.
  StoreOnE("A.PNG", "old");
  WriteIni("[printer]\ndevice_capacity=100\n");
  const tagRun other = Tvmgr({"restore", good, "--yes"});
  EXPECT_EQ(other.exit_code, 1U) << other.out;
  EXPECT_THAT(other.out, HasSubstr("A.PNG  -       -        other content\n"));
}

TEST_F(CBackupTest, CoverageListsWhatBackupsDoNotHold) {
  const json rows = Json({"backup", "coverage"})["settings"];
  EXPECT_EQ(
      std::count_if(rows.begin(), rows.end(), [](const json& row) { return row["in_backups"] == true; }), 58);
}

TEST_F(CBackupTest, CheckAndDiffNeedNoPortLibrary) {
  const fs::path alone = folder_ / "alone";
  fs::create_directories(alone);
  for (const char* const file : {"tvmgr.exe", "TaviraManager.dll"}) {
    fs::copy_file(ProgramFolder() / file, alone / file);
  }
  const std::string path =
      HostFile("c.bak", "^FXLX-R4100SeriesTavira^FS\r\n^FX20310504131415^FS\r\n^FXC^FS\r\n^XA^H(E^XZ\r\n");
  EXPECT_EQ(RunProgram(alone / "tvmgr.exe", {"backup", "check", path, "--quiet"}).out,
            path + ": complete, made 2031-05-04 13:14:15, sections C, 0 settings, 0 files, 71 bytes\n");
  EXPECT_EQ(RunProgram(alone / "tvmgr.exe", {"backup", "diff", path, path}).exit_code, 0U);
}

TEST_F(CBackupTest, ProgressNamesTheFileAndTheBytes) {
  // Each file takes longer than the first line of progress lets wait.
  WriteIni("[faults]\nlatency_ms=1300\n");
  for (const char* const name : {"ONE.PNG", "TWO.PNG"}) {
    StoreOnE(name, "bytes");
  }
  const tagRun run = Tvmgr({"backup", Utf8Path("long.bak"), "--sections", "graphics"});
  EXPECT_EQ(run.exit_code, 0U) << run.err;
  EXPECT_THAT(run.err,
              testing::ContainsRegex(
                  "writing the backup \\.\\.\\. \\d+ s, file \\d of 2, \\d+ bytes written .usually "));
}

}  // namespace
