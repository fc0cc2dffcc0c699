#include <gmock/gmock.h>
#include <windows.h>

#include <map>

#include "cli_fixture.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

class CDoctorTest : public CCliTest {
 protected:
  /** What the steps of a run come to, by their names: "verdict: reason -> cure". */
  static std::map<std::string, std::string> Steps(const tagRun& run) {
    const json document = json::parse(run.out, nullptr, false);
    EXPECT_FALSE(document.is_discarded()) << run.out << run.err;
    std::map<std::string, std::string> steps;
    for (const json& step : document.value("steps", json::array())) {
      const std::string cure = step["cure"].is_null() ? "" : " -> " + step["cure"].get<std::string>();
      steps[step["step"]] =
          step["verdict"].get<std::string>() + ": " + step["reason"].get<std::string>() + cure;
    }
    EXPECT_EQ(steps.size(), 10U) << run.out;
    EXPECT_EQ(document["exit_code"], run.exit_code);
    return steps;
  }

  /** A folder with the tool and these DLLs; no name: none. */
  std::filesystem::path ToolWith(const std::string& folder, const std::string& manager,
                                 const std::string& port) const {
    const std::string program =
        HostFile(folder + "\\tvmgr.exe", ReadFileBytes(ProgramFolder() / "tvmgr.exe"));
    for (const auto& [name, bytes] :
         {std::pair("\\TaviraManager.dll", &manager), {"\\Ferrolink.dll", &port}}) {
      if (!bytes->empty()) {
        HostFile(folder + name, *bytes);
      }
    }
    return HostPath(folder + "\\tvmgr.exe");
  }
};

TEST_F(CDoctorTest, EachTroubleOfAPrinterIsNamedByItsStepAndNothingIsWritten) {
  const struct {
    std::string ini;
    std::vector<std::string> arguments;
    std::uint32_t exit_code;
    std::map<std::string, std::string> words; /**< of steps */
  } cases[] = {
      // One that would save its settings if they were read.
      {"[factory]\nCLR,Z=300\n",
       {},
       0,
       {{"tool", "well: tvmgr"},
        {"module", "as the tool, and all 39"},
        {"port library", "six entry points"},
        {"choice", "well: the printer TEST"},
        {"answer", "well: it answered"},
        {"prefix characters", "well"},
        {"state", "well: idle"},
        {"round trip", "well: 5 of 5"}}},
      {"[printer]\nstate=PR\n", {}, 3, {{"answer", "well"}, {"state", "look: busy"}, {"round trip", "well"}}},
      {"[faults]\nsilent=1\n",
       {},
       4,
       {{"answer", "failed: the question"},
        {"prefix characters", "not tried: asked"},
        {"state", "not tried"}}},
      {"[faults]\nfail=Initialize:1:-1011\n",
       {},
       4,
       {{"answer", "connection refused"},
        {"prefix characters", "not tried"},
        {"round trip", "\"answer\" stands"}}},
      {"[faults]\nsilent_from=4\n", {}, 4, {{"answer", "well"}, {"round trip", "failed: 1 of 3"}}},
      {"",
       {"--port", "NONE7"},
       3,
       {{"port", "look: the print spooler has no port NONE7"}, {"answer", "well"}}},
      {"", {"--address", "127.0.0.1:9"}, 4, {{"network", "127.0.0.1"}, {"answer", "failed: code -1011"}}},
      {"",
       {"--address", "no.such.host.invalid"},
       1,
       {{"network", "failed: no.such.host.invalid is no known"}}},
  };
  for (const auto& trouble : cases) {
    WriteIni(trouble.ini);
    std::vector<std::string> arguments = trouble.arguments;
    arguments.insert(arguments.end(), {"doctor", "--json"});
    const tagRun run = Tvmgr(arguments);
    EXPECT_EQ(run.exit_code, trouble.exit_code) << run.out << run.err;
    std::map<std::string, std::string> steps = Steps(run);
    for (const auto& [step, words] : trouble.words) {
      EXPECT_THAT(steps[step], HasSubstr(words)) << trouble.ini;
    }
  }
  EXPECT_THAT(Log(), Not(HasSubstr("^JUS")));
  EXPECT_THAT(Log(), Not(HasSubstr("^S(CLR")));

  WriteIni("[factory]\nCLR,Z=300\n");
  EXPECT_THAT(Steps(Tvmgr({"doctor", "--read", "--json"}))["round trip"],
              HasSubstr("so it has saved its settings"));
  SetEnvironmentVariableW(L"TVMGR_DEVICE", nullptr);
  const tagRun none = Tvmgr({"doctor"});
  EXPECT_EQ(none.exit_code, 3U);
  EXPECT_THAT(none.out, HasSubstr("look       choice\n           none is chosen"));
  EXPECT_THAT(none.out, Not(HasSubstr("\x1B")));
}

TEST_F(CDoctorTest, ChangedPrefixCharactersExplainTheSilence) {
  ASSERT_EQ(Tvmgr({"prefix", "--set", "!", "@", ";", "--yes"}).exit_code, 0U);
  WriteIni("[printer]\nstrict_prefix=1\n");
  const tagRun run = Tvmgr({"doctor", "--json"});
  EXPECT_EQ(run.exit_code, 4U);
  EXPECT_THAT(Steps(run)["prefix characters"], HasSubstr("failed: the printer says that they are not"));
}

TEST_F(CDoctorTest, LibrariesThatStandInTheWayAreNamedAndTheRestIsStillLookedAt) {
  const std::string manager = ReadFileBytes(ProgramFolder() / "TaviraManager.dll");
  const std::string port = ReadFileBytes(ProgramFolder() / "Ferrolink.dll");
  std::string narrow = port;
  narrow.replace(static_cast<unsigned char>(port.at(0x3C)) + 4U, 2, "\x4C\x01");
  const struct {
    std::string manager;
    std::string port;
    std::string step;
    std::string words;
  } cases[] = {
      {manager, "", "port library", "failed: Ferrolink.dll is not there"},
      {manager, narrow, "port library", "is a DLL for 32-bit programs"},
      {manager, "text", "port library", "is no DLL"},
      {"", port, "module", "TaviraManager.dll\" is not there"},
      {port, port, "module", "is another DLL"},
  };
  int number = 0;
  for (const auto& broken : cases) {
    const tagRun run =
        RunProgram(ToolWith(std::to_string(++number), broken.manager, broken.port), {"doctor", "--json"});
    EXPECT_EQ(run.exit_code, 1U) << run.err;
    std::map<std::string, std::string> steps = Steps(run);
    EXPECT_THAT(steps[broken.step], HasSubstr(broken.words));
    EXPECT_THAT(steps["choice"], HasSubstr("well: "));
    EXPECT_THAT(steps["answer"], HasSubstr("not tried: the step \"" + broken.step + "\""));
  }
  // One that is loaded all the same.
  const auto program = ToolWith("marked", manager, port);
  HostFile("marked\\Ferrolink.dll:Zone.Identifier", "[ZoneTransfer]\r\nZoneId=3\r\n");
  const tagRun run = RunProgram(program, {"doctor", "--json"});
  EXPECT_EQ(run.exit_code, 3U) << run.err;
  EXPECT_THAT(Steps(run)["port library"], HasSubstr("carries the mark of a download -> right-click"));
}

TEST_F(CDoctorTest, PortLibraryThatHangsOrCrashesEndsNoLaterThanStated) {
  const std::string manager = ReadFileBytes(ProgramFolder() / "TaviraManager.dll");
  const auto program =
      ToolWith("broken", manager, ReadFileBytes(ProgramFolder() / "broken" / "Ferrolink.dll"));
  const std::string trace = Utf8Path("hang.txt");
  SetEnvironmentVariableW(L"BROKEN_PORT", L"hang");
  const std::uint64_t start = GetTickCount64();
  const tagRun run = RunProgram(program, {"doctor", "--json", "--trace", trace});
  EXPECT_LT(GetTickCount64() - start, 30'000U);
  EXPECT_EQ(run.exit_code, 4U) << run.err;
  EXPECT_THAT(Steps(run)["answer"], HasSubstr("did not come back from a call within 12 s"));
  EXPECT_THAT(ReadFileBytes(HostPath("hang.txt")),
              HasSubstr("TVMGR_GetPrinterStatus(out) ...\nend: exit code 4"));
  SetEnvironmentVariableW(L"BROKEN_PORT", L"crash");
  const tagRun crash = RunProgram(program, {"doctor", "--trace", trace});
  EXPECT_EQ(crash.exit_code, 1U);
  EXPECT_THAT(crash.out, HasSubstr("well       port library"));
  EXPECT_THAT(crash.err, HasSubstr("the work ended with the exception"));
  EXPECT_THAT(crash.err, HasSubstr("while asking for the printer's state"));
  EXPECT_THAT(ReadFileBytes(HostPath("hang.txt")),
              HasSubstr("TVMGR_GetPrinterStatus(out)\nend: the printer TEST"));
}

TEST_F(CDoctorTest, PortLibraryThatIsNeverLoadedToItsEndIsLeftBehind) {
  const std::string manager = ReadFileBytes(ProgramFolder() / "TaviraManager.dll");
  const auto program =
      ToolWith("broken", manager, ReadFileBytes(ProgramFolder() / "broken" / "Ferrolink.dll"));
  SetEnvironmentVariableW(L"BROKEN_PORT", L"load");
  const std::uint64_t start = GetTickCount64();
  const tagRun run = RunProgram(program, {"doctor", "--json", "--trace", Utf8Path("load.txt")});
  EXPECT_LT(GetTickCount64() - start, 30'000U);
  EXPECT_EQ(run.exit_code, 1U) << run.err;
  std::map<std::string, std::string> steps = Steps(run);
  EXPECT_THAT(steps["port library"], HasSubstr("is still being loaded after 12 s"));
  EXPECT_THAT(steps["network"], HasSubstr("not tried: the step \"port library\""));
}

class CTraceTest : public CCliTest {};

TEST_F(CTraceTest, EveryCallIsThereWithItsResultAndNoContents) {
  const std::string path = Utf8Path("trace.txt");
  const std::string label = HostFile("label.zpl", "^FDsecret^FS");
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"put", label}, {"set", "CLM,P=3"}, {"send", "--text", "secret"}}) {
    std::vector<std::string> traced{"--trace", path};
    traced.insert(traced.end(), arguments.begin(), arguments.end());
    EXPECT_EQ(Tvmgr(traced).exit_code, 0U);
  }
  const std::string trace = ReadFileBytes(HostPath("trace.txt"));
  for (const char* const words :
       {"tvmgr trace 1\n", ", command \"put\"\n", " TVMGR_Initialize() = 0 took ",
        "TVMGR_RegistData() = 0 took ",
        " TVMGR_GetRegistFileArrayData(75, 0, out, 10) = 0 -> \"LABEL.ZPL\" 10 took ",
        " TVMGR_UpdateRegistList(0x1001001, ", " bytes, SHA-256 ",
        " TVMGR_SetUpdateList(6, \"3\", 1) = 0 took ",
        "TVMGR_GetSettingValue(6, out, 1) = true -> \"3\" 1 took ",
        " TVMGR_GetPrinterStatus(out) = 0 -> 1 took ",
        " TVMGR_DirectSendCommand(6 bytes, SHA-256 "
        "2bb80d537b1da3e38bd30361aa855686bde0eacd7162fef6a25fe97bf527a25b, 6, ",
        "\nend: exit code 0 after "}) {
    EXPECT_THAT(trace, HasSubstr(words));
  }
  EXPECT_THAT(trace, Not(HasSubstr("secret")));
  EXPECT_EQ(Tvmgr({"--trace", path, "--trace-contents", "send", "--text", "secret"}).exit_code, 0U);
  EXPECT_THAT(ReadFileBytes(HostPath("trace.txt")), HasSubstr("TVMGR_DirectSendCommand(\"secret\", 6, "));
}

TEST_F(CTraceTest, FilesThatAreNoTraceAreRefusedBeforeAnythingIsDone) {
  const std::string other = HostFile("printer.bak", "precious");
  for (const std::string& path :
       {other, Utf8Path("no folder\\trace.txt"), Utf8Path("."), std::string("NUL")}) {
    const tagRun run = Tvmgr({"set", "CLM,P=3", "--trace", path});
    EXPECT_EQ(run.exit_code, 1U) << path;
    EXPECT_THAT(run.err, HasSubstr("nothing was done")) << path;
  }
  EXPECT_EQ(ReadFileBytes(HostPath("printer.bak")), "precious");
  EXPECT_EQ(Tvmgr({"status", "--trace-contents"}).exit_code, 2U);
  EXPECT_EQ(Log(), "");
}

}  // namespace
