#include <gmock/gmock.h>
#include <windows.h>

#include "cli_fixture.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class CFailuresTest : public CCliTest {};

TEST_F(CFailuresTest, UnusableLibrariesAreNamedWithTheirPathAndWhatIsWrong) {
  namespace fs = std::filesystem;
  const fs::path alone = folder_ / "alone";
  fs::create_directories(alone);
  fs::copy_file(ProgramFolder() / "tvmgr.exe", alone / "tvmgr.exe");
  const std::string program = ReadFileBytes(ProgramFolder() / "tvmgr.exe");
  const std::string manager = ReadFileBytes(ProgramFolder() / "TaviraManager.dll");
  const std::string port = ReadFileBytes(ProgramFolder() / "Ferrolink.dll");
  const auto pe = static_cast<unsigned char>(manager.at(0x3C));
  std::string narrow = manager;
  narrow.replace(pe + 4U, 2, "\x4C\x01");
  const auto without = [](std::string bytes, const std::string& name) {
    for (std::size_t at = bytes.find(name); at != std::string::npos; at = bytes.find(name, at)) {
      bytes[at] = 'X';
    }
    return bytes;
  };
  const std::string damaged = "is no DLL, or it is damaged";
  const struct {
    std::string manager;
    std::string port;
    std::vector<std::string> words;
  } cases[] = {
      {"", port, {"TaviraManager.dll cannot be used", "alone\\TaviraManager.dll\" is not there"}},
      {"text", port, {"alone\\TaviraManager.dll\" " + damaged}},
      {manager.substr(0, 1000), port, {"alone\\TaviraManager.dll\" "}},
      {narrow, port, {"is a DLL for 32-bit programs"}},
      {port, port, {"is another DLL: it has none of the entry points TVMGR_Initialize"}},
      {without(manager, "TVMGR_Restore"), port, {"lacks the entry points TVMGR_Restore"}},
      {manager, "", {"Ferrolink.dll is not there", "alone\"", "beside tvmgr.exe"}},
      {manager, "text", {"alone\\Ferrolink.dll\" " + damaged}},
      {manager, program, {"alone\\Ferrolink.dll\" " + damaged}},
      {manager, narrow, {"alone\\Ferrolink.dll\" is a DLL for 32-bit programs"}},
      {manager, manager, {"is another DLL: it has none of the entry points Initialize, Terminate, SendData"}},
      {manager, without(port, "SendData"), {"alone\\Ferrolink.dll\" lacks the entry points SendData"}},
  };
  for (const auto& broken : cases) {
    for (const auto& [name, bytes] :
         {std::pair("TaviraManager.dll", &broken.manager), {"Ferrolink.dll", &broken.port}}) {
      fs::remove(alone / name);
      if (!bytes->empty()) {
        HostFile(std::string("alone\\") + name, *bytes);
      }
    }
    const tagRun run = RunProgram(alone / "tvmgr.exe", {"status"});
    EXPECT_EQ(run.exit_code, 1U);
    EXPECT_EQ(run.out, "");
    for (const std::string& words : broken.words) {
      EXPECT_THAT(run.err, HasSubstr(words));
    }
  }
  // What needs no printer needs no library.
  fs::remove(alone / "TaviraManager.dll");
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"codes"}, {"op", "--list"}, {"use", "USB001"}, {"--help"}, {"ports"}}) {
    EXPECT_EQ(RunProgram(alone / "tvmgr.exe", arguments).exit_code, 0U) << arguments.front();
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

TEST_F(CFailuresTest, EveryFailureNamesThePrinterWhatFailedWhyAndWhatToDo) {
  const std::string printer = "tvmgr: the printer TEST" + std::to_string(GetCurrentProcessId()) + ": ";
  const std::string asking = "asking for the printer's status failed: ";
  const struct {
    std::string ini;
    std::vector<std::string> arguments;
    std::vector<std::string> words;
  } cases[] = {
      {"[faults]\nfail=SendData:1:-77\n",
       {"status"},
       {asking + "-77: a code of the port library", "check that"}},
      {"[faults]\nfail=Initialize:1:-1011\n",
       {"get", "CLR,Z"},
       {asking + "-1011: ", "connection refused: no printer"}},
      {"[faults]\nsilent=1\n", {"send", "--text", "x"}, {"the printer did not answer", "--no-check tries"}},
      {"", {"fetch", "NONE.PNG"}, {"the printer has no file NONE.PNG", "--unlisted"}},
  };
  for (const auto& failing : cases) {
    WriteIni(failing.ini);
    const tagRun run = Tvmgr(failing.arguments);
    EXPECT_NE(run.exit_code, 0U);
    EXPECT_THAT(run.err, HasSubstr(printer));
    for (const std::string& words : failing.words) {
      EXPECT_THAT(run.err, HasSubstr(words));
    }
  }
  EXPECT_THAT(Log(), Not(HasSubstr("x^XA^H(E")));  // nothing is sent to a printer that does not answer
  EXPECT_THAT(Tvmgr({"codes", "-82"}).out,
              HasSubstr("TVMGR_NOT_CONFIRMED\n    the printer took the command"));
  EXPECT_THAT(Tvmgr({"codes", "-1013"}).out, HasSubstr("the emulated one means: the connection broke"));
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
  SetEnvironmentVariableW(L"TVMGR_DEVICE", nullptr);
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
