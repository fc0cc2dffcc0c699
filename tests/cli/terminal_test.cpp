// What tvmgr does when a person sits in front of it: questions, Ctrl-C, output that is no text.
#include <gmock/gmock.h>
#include <windows.h>

#include <chrono>
#include <thread>

#include "cli_fixture.h"
#include "test_console.h"

namespace {

using testing::HasSubstr;
using testing::Not;

constexpr char kPicture[] = "\x89PNG\r\n\x1A\nIEND\xAE\x42\x60\x82";

class CTerminalTest : public CCliTest {
 protected:
  /** Runs tvmgr with the console as its stdin, and stdout as well when asked for. */
  tagRun AtConsole(const std::vector<std::string>& arguments, const std::string& keys,
                   bool shows = false) const {
    console_.Type(keys);
    return RunProgram(ProgramFolder() / "tvmgr.exe", arguments, {},
                      {console_.Input(), shows ? console_.Output() : nullptr});
  }

  const CTestConsole console_;
};

TEST_F(CTerminalTest, WhatIsThereIsOverwrittenOnlyAfterYes) {
  StoreOnE("LOGO.PNG", "old");
  const std::string picture = HostFile("logo.png", kPicture);
  const std::string target = HostFile("target", "old");
  const struct {
    std::vector<std::string> arguments;
    std::string question;
  } cases[] = {
      {{"put", picture}, "overwrite LOGO.PNG on the printer TEST"},
      {{"fetch", "LOGO.PNG", "-o", target}, "overwrite the file \"" + target + "\" on this computer"},
      {{"backup", target}, "overwrite the file \"" + target + "\" on this computer"},
      {{"prefix", "--set", "!", "@", ";"}, "change the prefix characters of the printer TEST"},
      {{"rm", "LOGO.PNG"}, "delete LOGO.PNG on the printer TEST"},
      {{"op", "initialize-memory"}, "delete every file on device E: on the printer TEST"},
  };
  for (const auto& asking : cases) {
    const std::string question = "his will " + asking.question;
    const tagRun piped = Tvmgr(asking.arguments, "yes\n");
    EXPECT_EQ(piped.exit_code, 2U) << piped.err;
    EXPECT_THAT(piped.err, AllOf(HasSubstr("--yes is missing"), HasSubstr(question)));
    const tagRun no = AtConsole(asking.arguments, "no\n");
    EXPECT_EQ(no.exit_code, 1U) << no.err;
    EXPECT_THAT(no.err, AllOf(HasSubstr(question), HasSubstr("not confirmed: nothing was changed")));
  }
  EXPECT_EQ(StoredOnE("LOGO.PNG"), "old");
  EXPECT_EQ(ReadFileBytes(HostPath("target")), "old");
  EXPECT_THAT(Log(), Not(HasSubstr("~DY")));
  EXPECT_THAT(Log(), Not(HasSubstr("^CC")));
  for (const auto& asking : cases) {
    const tagRun yes = AtConsole(asking.arguments, "yes\n");
    EXPECT_EQ(yes.exit_code, 0U) << asking.question << yes.err;
  }
  EXPECT_THAT(ReadFileBytes(HostPath("target")), HasSubstr("^XA^S(CLM,P"));
}

TEST_F(CTerminalTest, CtrlCLetsTheStepEndAndASecondOneSaysWhatMayBeLeft) {
  WriteIni("[printer]\nmaintenance_ms=4000\n");
  for (const int presses : {1, 2}) {
    // While the printer is at work, however long the way there takes on this computer.
    const std::jthread user([this, presses] {
      AwaitInLog("~JC", presses);
      for (int i = 0; i < presses; ++i) {
        CTestConsole::PressCtrlC();
        std::this_thread::sleep_for(std::chrono::milliseconds(1000));
      }
    });
    const tagRun run = AtConsole({"op", "media-calibration"}, "");
    EXPECT_THAT(run.err, HasSubstr("Ctrl-C: waiting for running media-calibration to end"));
    EXPECT_EQ(run.exit_code, presses == 1 ? 0U : 1U) << run.err;
    EXPECT_EQ(
        run.err.find("ended by Ctrl-C while running media-calibration. What of it") != std::string::npos,
        presses == 2)
        << run.err;
  }
}

TEST_F(CTerminalTest, BytesOfAFileDoNotGoToATerminal) {
  StoreOnE("LOGO.PNG", kPicture);
  const tagRun run = AtConsole({"fetch", "LOGO.PNG"}, "", true);
  EXPECT_EQ(run.exit_code, 2U);
  EXPECT_THAT(run.err, HasSubstr("do not go to a terminal: name a file with -o"));
  EXPECT_EQ(Log(), "");
}

TEST_F(CTerminalTest, VerdictsAreColouredOnATerminalUnlessSomebodySaysNo) {
  WriteIni("[faults]\nlatency_ms=0\n");
  const std::vector<std::string> set{"set", "CLM,P=3", "--columns", "verdict"};
  EXPECT_EQ(Tvmgr(set).out, "VERDICT\nwritten\n");
  EXPECT_EQ(AtConsole(set, "", true).exit_code, 0U);
  EXPECT_TRUE(console_.ShowsColour());
  for (const bool by_option : {true, false}) {
    console_.Clear();
    std::vector<std::string> plain = set;
    if (by_option) {
      plain.emplace_back("--no-color");
    }
    SetEnvironmentVariableW(L"NO_COLOR", by_option ? nullptr : L"1");
    EXPECT_EQ(AtConsole(plain, "", true).exit_code, 0U);
    EXPECT_FALSE(console_.ShowsColour()) << by_option;
  }
  SetEnvironmentVariableW(L"NO_COLOR", nullptr);
}

}  // namespace
