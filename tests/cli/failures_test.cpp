#include <gmock/gmock.h>
#include <windows.h>

#include "cli_fixture.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class CFailuresTest : public CCliTest {};

TEST_F(CFailuresTest, MissingPortLibraryIsNamedWithWhatToDo) {
  namespace fs = std::filesystem;
  const fs::path alone = folder_ / "alone";
  fs::create_directories(alone);
  for (const char* const file : {"tvmgr.exe", "TaviraManager.dll"}) {
    fs::copy_file(ProgramFolder() / file, alone / file);
  }
  for (const std::string command : {"status", "files"}) {
    const tagRun run = RunProgram(alone / "tvmgr.exe", {command});
    EXPECT_EQ(run.exit_code, 1U);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err,
                HasSubstr("-5: Ferrolink.dll is missing or incomplete: put the port library beside"));
  }
}

TEST_F(CFailuresTest, SilentPrinterIsFoundOutBeforeLongWork) {
  WriteIni("[faults]\nsilent=1\n");
  const std::uint64_t start = GetTickCount64();
  const tagRun run = Tvmgr({"set", "CLM,P=1"});
  EXPECT_EQ(run.exit_code, 4U);
  EXPECT_THAT(run.err, HasSubstr("the printer did not answer"));
  EXPECT_LT(GetTickCount64() - start, 10'000U);
  EXPECT_THAT(Log(), Not(HasSubstr("^S(CLM,P")));
}

TEST_F(CFailuresTest, FullLoadWithoutAnyValueIsSilenceToo) {
  // Answers arrive, but nothing of them can be read.
  WriteIni("[faults]\ncut_at=1\nlatency_ms=0\n");
  for (const tagRun& run : TvmgrEach({{"get", "--all", "--no-check"}, {"files", "--no-check"}})) {
    EXPECT_EQ(run.exit_code, 4U);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr("the printer did not answer"));
  }
}

TEST_F(CFailuresTest, CodeOfThePortLibraryIsPassedOnWithAdvice) {
  WriteIni("[faults]\nfail=SendData:1:-77\n");
  const tagRun run = Tvmgr({"status"});
  EXPECT_EQ(run.exit_code, 4U);
  EXPECT_THAT(run.err, HasSubstr("-77: a code of the port library"));
}

TEST_F(CFailuresTest, ChosenPrinterReachesThePortLibrary) {
  const struct {
    std::vector<std::string> arguments;
    std::wstring variable;
    std::string opened;
  } cases[] = {
      {{"--port", "USB001"}, L"", "port type 1, \"USB001\", \"\", \"\""},
      {{"--address", "printer.example"}, L"TVMGR_PORT", "\"\", \"\", \"printer.example\""},
      {{"--device", "\\\\?\\usb#1", "--port", "USB002"}, L"TVMGR_ADDRESS", "\"USB002\", \""},
      {{}, L"TVMGR_PORT", "\"B\\u00FCro\", \"\", \"\""},
      {{}, L"TVMGR_ADDRESS", "\"\", \"\", \"B\\u00FCro\""},
  };
  // An address would be connected to; a port that does not open is named in the log all the same.
  WriteIni("[faults]\nfail=Initialize:1:-77\n");
  for (const auto& choice : cases) {
    std::filesystem::remove(folder_ / "exchanges.log");
    for (const wchar_t* const variable : {L"TVMGR_PORT", L"TVMGR_ADDRESS"}) {
      SetEnvironmentVariableW(variable, choice.variable == variable ? L"B\u00FCro" : nullptr);
    }
    std::vector<std::string> arguments = choice.arguments;
    arguments.emplace_back("status");
    EXPECT_EQ(Tvmgr(arguments).exit_code, 4U);
    EXPECT_THAT(Log(), HasSubstr(choice.opened));
  }
}

}  // namespace
