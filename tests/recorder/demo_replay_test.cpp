// The tool's whole round with a printer, each command a process of its own: recorded in front of the emulated printer,
// then played back without any printer. What the tool says and writes must be the same, byte for byte.
#include <gmock/gmock.h>
#include <windows.h>

#include <regex>

#include "../cli/process_runner.h"
#include "recorder_fixture.h"

namespace recorder::test {
namespace {

namespace fs = std::filesystem;

struct tagStep {
  std::vector<std::string> arguments;
  const char* ini = nullptr;  // of the emulated printer, from this step on
};

const std::vector<tagStep> kSteps = {
    {{"info"}, "[printer]\nmaintenance_ms = 300\n"},
    {{"get", "CLR,Z", "76"}},
    {{"get", "--all"}},
    {{"set", "CLM,S=3"}},
    {{"put", "LOGO.PNG"}},
    {{"files"}},
    {{"op", "print-configuration"}},
    {{"backup", "printer.bak"}},
    {{"op", "factory-reset", "--yes"}},
    {{"op", "initialize-memory", "--yes"}},
    {{"get", "CLM,S"}},
    {{"files"}},
    {{"restore", "printer.bak", "--yes"}},
    {{"get", "CLM,S"}},
    {{"fetch", "LOGO.PNG", "-o", "FETCHED.PNG"}},
    {{"backup", "again.bak"}},
    {{"prefix", "--set", "!", "@", ";", "--yes"}},
    {{"send", "--text", "^XA^FDlabel^FS^XZ"}},
    {{"status", "--watch", "--interval", "1", "--count", "3"}, "[printer]\nbusy_ms = 900\n"},
};
const std::vector<std::string> kWritten = {"printer.bak", "again.bak", "FETCHED.PNG"};

// A backup tells when it was made, to the second, and so does every line of the watched status.
std::string WithoutClock(const std::string& text) {
  const std::string stamped = std::regex_replace(text, std::regex("\\^FX[0-9]{14}\\^FS"), "^FX(time)^FS");
  return std::regex_replace(stamped, std::regex("[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:.]+"), "(time)");
}

class CDemoReplayTest : public CRecorderTest {
 protected:
  CDemoReplayTest() {
    const fs::path built = Here().parent_path() / "bin";
    for (const char* file : {"TaviraManager.dll", "tvmgr.exe"}) {
      fs::copy(built / file, folder_ / file);
    }
    fs::copy(Recorder(), folder_ / "Ferrolink.dll");
    fs::copy(built / "Ferrolink.dll", folder_ / "Ferrolink_real.dll");
    SetVariable(L"LXEMU_MEMORY", folder_ / "memory");
    SetVariable(L"TVMGR_CONFIG", folder_ / "choice.json");
    SetVariable(L"TVMGR_PORT", L"USB001");
    std::string picture = "\x89PNG\r\n\x1A\n";
    for (int i = 0; i < 3000; ++i) {
      picture += static_cast<char>(i * 7);
    }
    picture += "IEND\xAE\x42\x60\x82";
    std::ofstream(folder_ / "LOGO.PNG", std::ios::binary) << picture;
  }

  void Record() {
    for (std::size_t i = 0; i < kSteps.size(); ++i) {
      if (kSteps[i].ini != nullptr) {
        fs::create_directories(folder_ / "memory");
        std::ofstream(folder_ / "memory" / "printer.ini") << kSteps[i].ini;
      }
      SetVariable(L"TAVIRA_RECORD_FOLDER", folder_ / "transcripts" / std::to_string(i));
      recorded_.push_back(Tvmgr(kSteps[i]));
      EXPECT_EQ(recorded_[i].exit_code, 0U) << kSteps[i].arguments[0] << ": " << recorded_[i].err;
    }
    MoveTo(folder_ / "recorded");
    EXPECT_EQ(ReadAll(folder_ / "recorded" / "FETCHED.PNG"), ReadAll(folder_ / "LOGO.PNG"));
  }

  /// Without the library and the printer's memory.
  void PlayAndCompare() const {
    fs::remove(folder_ / "Ferrolink_real.dll");
    fs::remove_all(folder_ / "memory");
    SetVariable(L"TAVIRA_REPLAY_REPORT", folder_ / "report");
    for (std::size_t i = 0; i < kSteps.size(); ++i) {
      const std::string& command = kSteps[i].arguments[0];
      const fs::directory_iterator transcript(folder_ / "transcripts" / std::to_string(i));
      ASSERT_NE(transcript, fs::directory_iterator()) << command;
      SetVariable(L"TAVIRA_REPLAY", transcript->path());
      fs::remove(folder_ / "report");
      if (command == "restore") {
        // The backup that was made now has another time in it.
        fs::remove(folder_ / "printer.bak");
        fs::copy(folder_ / "recorded" / "printer.bak", folder_ / "printer.bak");
      }
      const tagRun played = Tvmgr(kSteps[i]);
      EXPECT_EQ(played.exit_code, 0U) << command << ": " << played.err;
      EXPECT_EQ(WithoutClock(played.out), WithoutClock(recorded_[i].out)) << command;
      EXPECT_THAT(ReadAll(folder_ / "report"), testing::MatchesRegex("complete: \\d+ calls\n")) << command;
    }
    MoveTo(folder_ / "played");
    for (const std::string& name : kWritten) {
      EXPECT_EQ(WithoutClock(ReadAll(folder_ / "played" / name)),
                WithoutClock(ReadAll(folder_ / "recorded" / name)));
    }
    EXPECT_FALSE(fs::exists(folder_ / "memory"));
  }

 private:
  /** Without a time-out: its question for the status would be a transcript of its own. */
  tagRun Tvmgr(const tagStep& step) const {
    std::vector<std::string> arguments = {"--timeout", "0"};
    arguments.insert(arguments.end(), step.arguments.begin(), step.arguments.end());
    return RunProgram(folder_ / "tvmgr.exe", arguments);
  }

  void MoveTo(const fs::path& folder) const {
    fs::create_directories(folder);
    for (const std::string& name : kWritten) {
      fs::rename(folder_ / name, folder / name);
    }
  }

  std::vector<tagRun> recorded_;
};

// The transcript that the guide shows. When the module asks for the status with other bytes, record it anew.
TEST_F(CDemoReplayTest, ExampleOfTheGuide) {
  fs::remove(folder_ / "Ferrolink_real.dll");
  SetVariable(L"TAVIRA_REPLAY", Here() / "example.txt");
  SetVariable(L"TAVIRA_REPLAY_REPORT", folder_ / "report");
  const tagRun played = RunProgram(folder_ / "tvmgr.exe", {"--quiet", "status"});
  EXPECT_EQ(played.out + played.err, "idle (ready)\n");
  EXPECT_EQ(ReadAll(folder_ / "report"), "complete: 6 calls\n");
}

TEST_F(CDemoReplayTest, ARoundWithEveryKindOfCommand) {
  Record();
  PlayAndCompare();
}

}  // namespace
}  // namespace recorder::test
