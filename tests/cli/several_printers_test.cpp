// --printers: the parent of several tvmgr, what it asks, starts, ends and says.
#include <gmock/gmock.h>
#include <windows.h>

#include <tlhelp32.h>

#include <chrono>
#include <thread>

#include "cli_fixture.h"
#include "test_console.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;

class CSeveralPrintersTest : public CCliTest {
 protected:
  /** A tvmgr with another port library or module beside it. */
  fs::path Beside(const char* folder, const char* library) const {
    for (const char* const name : {"tvmgr.exe", "TaviraManager.dll"}) {
      fs::copy_file(ProgramFolder() / name, folder_ / name);
    }
    fs::copy_file(ProgramFolder() / folder / library, folder_ / library,
                  fs::copy_options::overwrite_existing);
    return folder_ / "tvmgr.exe";
  }

  /** The same under a name that no other program has: others run tests at the same time. */
  fs::path WithOwnName(const fs::path& program) const {
    const fs::path own = folder_ / ("tvmgr" + std::to_string(GetCurrentProcessId()) + ".exe");
    fs::rename(program, own);
    return own;
  }
};

TEST_F(CSeveralPrintersTest, WhatCannotBeStartedIsRefusedBeforeAnyPrinterIsAsked) {
  const std::string list = HostFile("list.txt", "USB001\n12\n");
  const std::string empty = HostFile("empty.txt", "# none\r\n");
  const std::string odd = HostFile("odd.txt", "a,b");
  const std::string folder = Utf8Path("nowhere");
  const struct {
    std::vector<std::string> arguments;
    unsigned exit_code;
    std::string words;
  } cases[] = {
      {{"status", "--printers", ""}, 2, "names no printer"},
      {{"status", "--printers", list}, 5, "line 2: \"12\" is a number"},
      {{"status", "--printers", empty}, 5, "names no printer"},
      {{"status", "--printers", folder + "\\list.txt"}, 5, "there is no file"},
      {{"rm", "A.PNG", "--printers", "device=\\\\?\\usb#1"}, 2, "on 1 printer: \\\\?\\usb#1"},
      {{"status", "--printers", odd}, 5, "line 1: \"a,b\" reads like several"},
      {{"status", "--printers", "USB001", "--jobs", "0"}, 2, "not in range"},
      {{"status", "--jobs", "2"}, 2, "--jobs requires --printers"},
      {{"status", "--limit", "9"}, 2, "--limit requires --printers"},
      {{"status", "--printers", "USB001", "--watch"}, 2, "--watch is for one printer"},
      {{"get", "CLM,S", "--printers", "USB001", "--columns", "key"}, 2, "not with --printers"},
      {{"status", "--printers", "USB001", "--port", "USB002"}, 2, "name one"},
      {{"backup", "check", list, "--printers", "USB001"}, 2, "\"tvmgr backup check\" takes no --printers"},
      {{"backup", "--printers", "USB001"}, 2, "name the files to write"},
      {{"backup", Utf8Path("a.bak"), "--printers", "USB001,USB002"}, 2, "would both get"},
      {{"backup", "-o", folder + "\\{printer}.bak", "--printers", "USB001"}, 1, "cannot be created"},
      {{"rm", "A.PNG", "--printers", "USB001,USB002"}, 2, "do \"rm A.PNG\" on 2 printers: USB001, USB002"},
      {{"rm", "A.PNG", "--dry-run=no", "--printers", "USB001"}, 2, "do \"rm A.PNG"},
  };
  std::vector<std::vector<std::string>> all;
  for (const auto& refused : cases) {
    all.push_back(refused.arguments);
  }
  const std::vector<tagRun> runs = TvmgrEach(all);
  for (std::size_t i = 0; i < runs.size(); ++i) {
    EXPECT_EQ(runs[i].exit_code, cases[i].exit_code) << cases[i].words << runs[i].err;
    EXPECT_THAT(runs[i].err, HasSubstr(cases[i].words));
    EXPECT_EQ(runs[i].out, "");
  }
  EXPECT_EQ(Log(), "");
}

TEST_F(CSeveralPrintersTest, EachHasItsVerdictAndItsReportAndTheChoiceStays) {
  const std::string chosen = R"({"chosen": {"kind": "port", "value": "USB009"}, "found": []})";
  HostFile("choice.json", chosen);
  const std::string list =
      HostFile("B\xC3\xBCro.txt", "\xEF\xBB\xBFUSB001 # till\r\n127.0.0.1:9\r\nusb001\r\nport=my port\r\n");
  const json done = Json({"set", "CLM,S=3", "--printers", "USB001,USB002", "--jobs", "64"});
  EXPECT_EQ(done["of"], "set");
  EXPECT_EQ(done["done_count"], 2);
  EXPECT_EQ(done["printers"][1]["printer"]["value"], "USB002");
  EXPECT_EQ(done["printers"][1]["document"]["settings"][0]["got"], "3");
  for (const bool is_json : {true, false}) {
    std::vector<std::string> arguments = {"get", "CLM,S", "--printers", list};
    arguments.insert(arguments.end(), is_json ? 1 : 0, "--json");
    const tagRun run = Tvmgr(arguments);
    EXPECT_EQ(run.exit_code, 6U);
    EXPECT_THAT(run.err, AllOf(HasSubstr("usb001 is named twice, in line 1 and line 3"),
                               HasSubstr("remark: my port: no printer is known behind port"),
                               HasSubstr("1 of 3 printers are not done: 127.0.0.1:9 (")));
    if (is_json) {
      const json document = json::parse(run.out);
      EXPECT_EQ(document["error"]["exit_code"], 6);
      EXPECT_EQ(document["printers"].size(), 3U);
      EXPECT_EQ(document["printers"][1]["verdict"], "unreachable");
      EXPECT_EQ(document["printers"][1]["exit_code"], 4);
      EXPECT_EQ(document["printers"][1]["document"]["error"]["code"], -1011);
      EXPECT_EQ(document["printers"][2]["result"], "CLM,S=3");
    } else {
      EXPECT_THAT(run.out, AllOf(HasSubstr("PRINTER      VERDICT      TIME"),
                                 HasSubstr("\n127.0.0.1:9\n    unreachable: ")));
    }
  }
  const tagRun wrong = Tvmgr({"set", "NOSUCH=1", "--printers", "USB001,USB002"});
  EXPECT_EQ(wrong.exit_code, 2U) << wrong.err;
  EXPECT_EQ(ReadFileBytes(HostPath("choice.json")), chosen);
}

TEST_F(CSeveralPrintersTest, OneThatHangsIsEndedAndOneThatCrashesHasTheWordsOfIt) {
  const fs::path program = Beside("broken", "Ferrolink.dll");
  SetEnvironmentVariableW(L"BROKEN_PORT", L"hang");
  const std::uint64_t start = GetTickCount64();
  const tagRun hangs = RunProgram(program, {"status", "--printers", "USB001,USB002", "--limit", "3"});
  EXPECT_LT(GetTickCount64() - start, 15'000U);
  EXPECT_EQ(hangs.exit_code, 6U);
  EXPECT_THAT(
      hangs.out,
      HasSubstr(
          "USB001, USB002\n    no verdict: its tvmgr was ended after 3 s (--limit): what was done on the "
          "printer is not known"));
  SetEnvironmentVariableW(L"BROKEN_PORT", L"crash");
  const tagRun crashes = RunProgram(program, {"status", "--printers", "USB001"});
  EXPECT_EQ(crashes.exit_code, 6U);
  EXPECT_THAT(crashes.out,
              HasSubstr("failed: the printer on USB001: the work ended with the exception 0xC000001D"));
  SetEnvironmentVariableW(L"BROKEN_PORT", nullptr);
}

/** The processes of this program. */
std::vector<DWORD> ProcessesOf(const fs::path& program) {
  std::vector<DWORD> found;
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = Process32FirstW(snapshot, &entry); more; more = Process32NextW(snapshot, &entry)) {
    if (program.filename() == entry.szExeFile) {
      found.push_back(entry.th32ProcessID);
    }
  }
  CloseHandle(snapshot);
  return found;
}

/** Waits for so many of them; how many there are then. */
std::size_t WaitForProcesses(const fs::path& program, std::size_t count) {
  for (int i = 0; i < 300 && ProcessesOf(program).size() != count; ++i) {
    Sleep(50);
  }
  return ProcessesOf(program).size();
}

TEST_F(CSeveralPrintersTest, NoProcessOutlivesAParentThatIsEnded) {
  const fs::path program = WithOwnName(Beside("broken", "Ferrolink.dll"));
  SetEnvironmentVariableW(L"BROKEN_PORT", L"hang");
  std::wstring line = L"tvmgr status --printers USB001,USB002";
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION parent{};
  ASSERT_TRUE(CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                             &start, &parent));
  EXPECT_EQ(WaitForProcesses(program, 5), 5U)
      << "the parent, and for each printer its tvmgr and the worker of that";
  TerminateProcess(parent.hProcess, 9);
  EXPECT_EQ(WaitForProcesses(program, 0), 0U);
  CloseHandle(parent.hThread);
  CloseHandle(parent.hProcess);
  SetEnvironmentVariableW(L"BROKEN_PORT", nullptr);
}

TEST_F(CSeveralPrintersTest, FoundIsWhatASearchFindsNow) {
  const fs::path program = Beside("scripted", "TaviraManager.dll");
  SetEnvironmentVariableW(L"SCRIPTED_MANAGER", L"quick busy");
  const std::string names = HostFile("names.txt", "name=lx-r4100\nno body\n");
  const tagRun named = RunProgram(program, {"status", "--printers", names, "--json"});
  EXPECT_EQ(named.exit_code, 6U);
  const json twins = json::parse(named.out);
  EXPECT_EQ(twins["printers"][0]["reason"], "several printers have this name: usb#1, 192.0.2.7");
  EXPECT_EQ(twins["printers"][1]["reason"], "the search found no printer of this name");
  EXPECT_EQ(twins["printers"][1]["verdict"], "not started");
  EXPECT_EQ(twins["printers"][1]["printer"]["name"], "no body");
  const json document = json::parse(RunProgram(program, {"status", "--printers", "found", "--json"}).out);
  ASSERT_EQ(document["printers"].size(), 2U);
  EXPECT_EQ(document["printers"][0]["printer"]["value"], "usb#1");
  EXPECT_EQ(document["printers"][1]["printer"]["value"], "192.0.2.7");
  EXPECT_FALSE(fs::exists(folder_ / "choice.json")) << "the numbers of \"use\" stay";
  SetEnvironmentVariableW(L"SCRIPTED_MANAGER", L"quick busy no_network");
  const tagRun half = RunProgram(program, {"status", "--printers", "found", "--quiet"});
  EXPECT_EQ(half.exit_code, 6U);
  EXPECT_THAT(half.out, HasSubstr("usb#1 (LX-R4100)  done"));
  EXPECT_THAT(half.err,
              HasSubstr("done on each printer that was found, but the search for printers: one half"));
  SetEnvironmentVariableW(L"SCRIPTED_MANAGER", L"quick none");
  const tagRun none = RunProgram(program, {"status", "--printers", "found"});
  EXPECT_EQ(none.exit_code, 1U);
  EXPECT_THAT(none.err, HasSubstr("the search found no printers: nothing was started"));
}

TEST_F(CSeveralPrintersTest, AtATerminalItAsksOnceAndCtrlCBeginsNoMore) {
  const CTestConsole console;
  StoreOnE("A.PNG", "old");
  const auto run = [&](const std::vector<std::string>& arguments, const std::string& keys) {
    console.Type(keys);
    return RunProgram(ProgramFolder() / "tvmgr.exe", arguments, {}, {console.Input(), nullptr});
  };
  const std::vector<std::string> remove = {"rm", "A.PNG", "--printers", "USB001,USB002"};
  const tagRun no = run(remove, "no\n");
  EXPECT_EQ(no.exit_code, 1U);
  EXPECT_THAT(no.err, AllOf(HasSubstr("do \"rm A.PNG\" on 2 printers: USB001, USB002. Type yes"),
                            HasSubstr("nothing was changed")));
  EXPECT_EQ(Log(), "");
  run(remove, "yes\n");
  EXPECT_EQ(StoredOnE("A.PNG"), "");
  WriteIni("[printer]\nmaintenance_ms=4000\n");
  // While the first is at work: other tests of this computer may keep it waiting for its port before.
  const std::jthread user([this] {
    AwaitInLog("~JC");
    CTestConsole::PressCtrlC();
  });
  const tagRun stopped =
      run({"op", "media-calibration", "--yes", "--jobs", "1", "--printers", "USB001,USB002"}, "");
  EXPECT_EQ(stopped.exit_code, 6U);
  EXPECT_THAT(stopped.err, HasSubstr("Ctrl-C: no more printers are begun"));
  EXPECT_THAT(stopped.out, AllOf(HasSubstr("USB001   done"),
                                 HasSubstr("not started: Ctrl-C was pressed before its turn")));
}

TEST_F(CSeveralPrintersTest, CtrlCInTheSearchBeginsNothing) {
  const CTestConsole console;
  const fs::path program = WithOwnName(Beside("scripted", "TaviraManager.dll"));
  SetEnvironmentVariableW(L"SCRIPTED_MANAGER", L"busy");
  const std::jthread user([&] {
    WaitForProcesses(program, 2);
    CTestConsole::PressCtrlC();
  });
  const tagRun run = RunProgram(program, {"status", "--printers", "found"}, {}, {console.Input(), nullptr});
  EXPECT_EQ(run.exit_code, 1U);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, HasSubstr("stopped by Ctrl-C while printers were searched: nothing was started"));
  SetEnvironmentVariableW(L"SCRIPTED_MANAGER", nullptr);
}

}  // namespace
