// The built recorder as a host sees it, in front of a library that the tests know, and compared with that library alone.
// Some tests start this program again with an argument.
#include <gmock/gmock.h>
#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "port_host.h"
#include "recorder_fixture.h"

namespace recorder::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class CRecorderDllTest : public CRecorderTest {
 protected:
  /// Starts a program, this one unless told, with an argument; the folder of the transcripts is ours.
  static HANDLE Start(const std::wstring& argument, const char* program = "recorder_tests.exe") {
    std::wstring line = L"\"" + (Here() / program).wstring() + L"\" " + argument;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    EXPECT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                               &process));
    CloseHandle(process.hThread);
    return process.hProcess;
  }
};

// Every kind of call, with wrong use; everything that a host can notice.
std::vector<std::string> UseAll(const CPortHost& host) {
  std::vector<std::string> seen;
  std::uint32_t count = 0;
  const auto note = [&](std::int64_t result) {
    seen.push_back(std::to_string(result) + " " + std::to_string(count) + " " +
                   std::to_string(GetLastError()));
    SetLastError(55);
  };
  SetLastError(55);
  const struct {
    std::int32_t type;
    const void* rest[6];
  } description{-41, {}};
  note(host.initialize(&description));
  note(host.initialize(nullptr));
  note(host.Send("abc\r\n\xff"));
  note(host.receive(nullptr, &count));
  char buffer[8] = "-------";
  count = 4;
  note(host.receive(reinterpret_cast<std::uint8_t*>(buffer), &count));
  seen.emplace_back(buffer);
  note(host.receive(nullptr, nullptr));
  note(host.send(nullptr, 9));
  note(host.Send("fail"));
  count = 8;
  note(host.receive(reinterpret_cast<std::uint8_t*>(buffer), &count));
  note(host.terminate());
  note(static_cast<std::int64_t>(host.clear(2.5, 1LL << 33, 3.25F, "A", 1LL << 40, 4.125, -5) * 1000));
  std::int32_t counter = 1;
  const tagManyResults many = host.index(1.5F, 1LL << 41, 2.5, &counter, {3.5F, 9, 4.5}, 6);
  EXPECT_EQ(many, (tagManyResults{5.0F, (1LL << 41) + 9, 13.0}));
  note(counter);
  return seen;
}

TEST_F(CRecorderDllTest, HostNoticesNothingAndTheTranscriptTellsAll) {
  const std::vector<std::string> direct = UseAll(CPortHost(RealLibrary()));
  ASSERT_EQ(direct.size(), 13U);
  EXPECT_EQ(UseAll(CPortHost(Recorder())), direct);
  std::string text;
  const tagTranscript transcript = Transcript(&text);
  ASSERT_EQ(transcript.calls.size(), 12U) << text;
  EXPECT_TRUE(transcript.has_end);
  EXPECT_THAT(text, HasSubstr(", host recorder_tests.exe, process "));
  EXPECT_THAT(text, HasSubstr(", library Ferrolink_real.dll, "));
  EXPECT_THAT(text, HasSubstr(" Initialize -41 null null null 0 \"\" = -41 took "));
  EXPECT_THAT(text, HasSubstr(" SendData 6 \"abc\\r\\n\\xff\" = 0 took "));
  EXPECT_THAT(text, HasSubstr(" ReceiveData buffer 4 = 0 4 \"abc\\r\" took "));
  EXPECT_THAT(text, HasSubstr(" ReceiveData buffer 8 = -9 4 took "));
  EXPECT_EQ(transcript.calls[10].kind, CallKind::kClearReceiveData);
  EXPECT_EQ(transcript.calls[11].kind, CallKind::kGetPortComIndex);
  EXPECT_EQ(GetModuleHandleW(L"Ferrolink_real.dll"), nullptr) << "unloaded with the recorder";
}

TEST_F(CRecorderDllTest, LibraryThatIsMissingOrIncompleteIsSoForTheHost) {
  fs::create_directories(folder_ / "copy");
  fs::copy(Recorder(), folder_ / "copy" / "Ferrolink_real.dll");
  fs::create_directories(folder_ / "original");
  fs::copy(RealLibrary(), folder_ / "original" / "Ferrolink.dll");
  const struct {
    fs::path library;
    bool loads;
    const char* note;
  } cases[] = {
      {folder_ / "none.dll", false, "library none.dll does not load: Windows error 126"},
      {Here() / "incomplete.dll", false, "the library has no GetPortComIndex"},
      {Recorder(), false, "library Ferrolink.dll is the recorder itself"},
      {folder_ / "copy" / "Ferrolink_real.dll", false, "library Ferrolink_real.dll is the recorder itself"},
      {folder_ / "original" / "Ferrolink.dll", true, "library Ferrolink.dll, "},
      {RealLibrary(), true, "library Ferrolink_real.dll, "},
  };
  for (const auto& test : cases) {
    fs::remove_all(folder_ / "transcripts");
    SetVariable(L"TAVIRA_RECORD_LIBRARY", test.library);
    {
      const CPortHost host(Recorder());
      ASSERT_EQ(host.IsLoaded(), test.loads) << test.library;
      if (test.loads) {
        EXPECT_EQ(host.terminate(), 7);
      }
    }
    bool is_noted = false;
    for (const fs::path& file : TranscriptFiles()) {
      is_noted = is_noted || ReadAll(file).find(test.note) != std::string::npos;
    }
    EXPECT_TRUE(is_noted) << test.note;
  }
}

DWORD ExitCode(HANDLE process) {
  DWORD code = 0;
  WaitForSingleObject(process, INFINITE);
  GetExitCodeProcess(process, &code);
  CloseHandle(process);
  return code;
}

TEST_F(CRecorderDllTest, LinkedHostHasItsLibraryFromTheFirstCallOn) {
  EXPECT_EQ(ExitCode(Start(L"", "linked_host.exe")), 7U);
  const tagTranscript transcript = Transcript();
  EXPECT_EQ(transcript.calls.size(), 1U);
  EXPECT_TRUE(transcript.has_end);
  SetVariable(L"TAVIRA_RECORD_LIBRARY", folder_ / "none.dll");
  EXPECT_EQ(ExitCode(Start(L"", "linked_host.exe")), static_cast<DWORD>(-2'000'000));
}

TEST_F(CRecorderDllTest, FolderThatCannotBeWrittenDisturbsNobody) {
  std::ofstream(folder_ / "file") << "in the way";
  SetVariable(L"TAVIRA_RECORD_FOLDER", folder_ / "file" / "transcripts");
  const std::vector<std::string> direct = UseAll(CPortHost(RealLibrary()));
  EXPECT_EQ(UseAll(CPortHost(Recorder())), direct);
  EXPECT_FALSE(fs::exists(folder_ / "transcripts"));
}

TEST_F(CRecorderDllTest, WithoutAFolderTheHostsOwnHoldsTheTranscript) {
  SetEnvironmentVariableW(L"TAVIRA_RECORD_FOLDER", nullptr);
  const std::string pattern = "-" + std::to_string(GetCurrentProcessId()) + ".txt";
  UseAll(CPortHost(Recorder()));
  int found = 0;
  for (const auto& entry : fs::directory_iterator(Here())) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with("Ferrolink-") && name.ends_with(pattern)) {
      ++found;
      fs::remove(entry.path());
    }
  }
  EXPECT_EQ(found, 1);
}

TEST_F(CRecorderDllTest, LibrarysExceptionReachesTheHost) {
  const CPortHost host(Recorder());
  EXPECT_THROW(host.Send("throw"), std::invalid_argument);
  host.terminate();
  const tagTranscript transcript = Transcript();
  ASSERT_EQ(transcript.calls.size(), 2U);
  EXPECT_FALSE(transcript.calls[0].is_finished);
  EXPECT_EQ(transcript.calls[1].result, 7);
}

TEST_F(CRecorderDllTest, HostThatIsKilledLeavesEveryLineAndTheCallThatHung) {
  const HANDLE process = Start(L"hang");
  std::string text;
  for (int i = 0; i < 600 && text.find("\"hang\"") == text.npos; ++i) {
    Sleep(50);
    const std::vector<fs::path> files = TranscriptFiles();
    text = files.empty() ? "" : ReadAll(files[0]);
  }
  EXPECT_EQ(WaitForSingleObject(process, 0), static_cast<DWORD>(WAIT_TIMEOUT));
  TerminateProcess(process, 9);
  WaitForSingleObject(process, INFINITE);
  CloseHandle(process);
  const tagTranscript transcript = Transcript();
  ASSERT_EQ(transcript.calls.size(), 101U);
  EXPECT_FALSE(transcript.has_end);
  EXPECT_EQ(transcript.calls[99].result, 7);
  EXPECT_EQ(transcript.calls[100].bytes, "hang");
  EXPECT_FALSE(transcript.calls[100].is_finished);
}

TEST_F(CRecorderDllTest, ProcessesAndThreadsAtOnceKeepTheirLinesApart) {
  const HANDLE processes[] = {Start(L"threads"), Start(L"threads"), Start(L"threads")};
  for (const HANDLE process : processes) {
    EXPECT_EQ(ExitCode(process), 0U);
  }
  const std::vector<fs::path> files = TranscriptFiles();
  ASSERT_EQ(files.size(), 3U);
  for (const fs::path& file : files) {
    tagTranscript transcript;
    ASSERT_FALSE(ReadTranscript(ReadAll(file), transcript));
    EXPECT_EQ(transcript.calls.size(), 400U);
    EXPECT_TRUE(transcript.has_end);
    for (const tagCall& call : transcript.calls) {
      EXPECT_EQ(call.bytes, std::to_string(call.thread));
      EXPECT_TRUE(call.is_finished);
    }
  }
}

int CountHandles() {
  int count = 0;
  for (std::uintptr_t handle = 4; handle < 0x2000; handle += 4) {
    DWORD flags = 0;
    count += GetHandleInformation(reinterpret_cast<HANDLE>(handle), &flags) ? 1 : 0;
  }
  return count;
}

TEST_F(CRecorderDllTest, ThreadsThatComeAndGoLeaveNoHandles) {
  const CPortHost host(Recorder());
  const auto use = [&] {
    for (int i = 0; i < 20; ++i) {
      const HANDLE thread = CreateThread(
          nullptr, 0,
          [](void* port) -> DWORD { return static_cast<DWORD>(static_cast<CPortHost*>(port)->terminate()); },
          const_cast<CPortHost*>(&host), 0, nullptr);
      WaitForSingleObject(thread, INFINITE);
      CloseHandle(thread);
    }
  };
  use();
  const int before = CountHandles();
  use();
  EXPECT_LE(CountHandles(), before);
}

TEST_F(CRecorderDllTest, ACallTakesLessThanAMillisecondMore) {
  // A machine that is busy with other tests is given more rounds; a recorder that is always slow stays slow.
  const auto quickest_round = [](const CPortHost& host) {
    auto quickest = std::chrono::steady_clock::duration::max();
    for (int round = 0; round < 20 && quickest > std::chrono::milliseconds(50); ++round) {
      const auto start = std::chrono::steady_clock::now();
      for (int i = 0; i < 100; ++i) {
        host.Send("some command");
      }
      quickest = std::min(quickest, std::chrono::steady_clock::now() - start);
    }
    return quickest;
  };
  const auto direct = quickest_round(CPortHost(RealLibrary()));
  EXPECT_GT(std::chrono::milliseconds(100), quickest_round(CPortHost(Recorder())) - direct);
}

PROCESS_MEMORY_COUNTERS Memory() {
  PROCESS_MEMORY_COUNTERS counters{};
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return counters;
}

TEST_F(CRecorderDllTest, HugeAnswerIsRecordedWithoutACopyAndPlayedBack) {
  constexpr std::size_t kSize = 64U << 20;
  constexpr std::size_t kAllowance = 8U << 20;
  const std::string command = "big " + std::to_string(kSize);
  std::string answer;
  {
    const CPortHost host(Recorder());
    ASSERT_EQ(host.Send(command), 0);
    auto count = static_cast<std::uint32_t>(kSize);
    answer.resize(kSize);
    const std::size_t before = Memory().PagefileUsage;
    ASSERT_EQ(host.receive(reinterpret_cast<std::uint8_t*>(answer.data()), &count), 0);
    EXPECT_LT(Memory().PeakPagefileUsage - before, kAllowance);
  }
  SetVariable(L"TAVIRA_REPLAY", TranscriptFiles().at(0));
  SetVariable(L"TAVIRA_REPLAY_REPORT", folder_ / "report");
  {
    const std::size_t before = Memory().PagefileUsage;
    const CPortHost host(Recorder());
    EXPECT_EQ(host.Send(command), 0);
    std::string again(kSize, '\0');
    auto count = static_cast<std::uint32_t>(kSize);
    EXPECT_EQ(host.receive(reinterpret_cast<std::uint8_t*>(again.data()), &count), 0);
    EXPECT_TRUE(again == answer);
    EXPECT_LT(Memory().PeakPagefileUsage - before, 2 * kSize + kAllowance);  // the answer twice among them
  }
  EXPECT_EQ(ReadAll(folder_ / "report"), "complete: 2 calls\n");
}

TEST_F(CRecorderDllTest, ReplayNeedsNoLibraryAndSaysWhereItEnded) {
  fs::create_directories(folder_ / "alone");
  const fs::path alone = folder_ / "alone" / "Ferrolink.dll";
  fs::copy(Recorder(), alone);
  UseAll(CPortHost(Recorder()));
  const fs::path recorded = TranscriptFiles().at(0);
  std::ofstream(folder_ / "bad.txt") << "Ferrolink transcript 1\nnonsense\n";
  const auto report = [&] { return ReadAll(folder_ / "report"); };
  SetVariable(L"TAVIRA_REPLAY_REPORT", folder_ / "report");
  const struct {
    fs::path transcript;
    const wchar_t* order;
    std::int32_t result;  // of Terminate, the first call
    const char* report;
  } cases[] = {
      {recorded, L"", -2'000'003, "failed: line 3: expected Initialize, the host calls Terminate\n"},
      {recorded, L"command", 0, "played 0 commands\n"},
      {recorded, L"any", -2'000'000, "failed: TAVIRA_REPLAY_ORDER is neither strict nor command\n"},
      {folder_ / "bad.txt", L"strict", -2'000'002, "failed: line 2: not understood\n"},
      {folder_ / "none.txt", L"strict", -2'000'000, "failed: cannot be read: Windows error 2\n"},
  };
  for (const auto& test : cases) {
    SetVariable(L"TAVIRA_REPLAY", test.transcript);
    SetEnvironmentVariableW(L"TAVIRA_REPLAY_ORDER", test.order);
    {
      const CPortHost host(alone);
      ASSERT_TRUE(host.IsLoaded());
      EXPECT_EQ(host.terminate(), test.result) << test.report;
      host.clear(1, 2, 3, "", 4, 5, 6);  // what it returns is not known
    }
    EXPECT_EQ(report(), test.report);
  }
  SetEnvironmentVariableW(L"TAVIRA_REPLAY_ORDER", nullptr);
  SetVariable(L"TAVIRA_REPLAY", recorded);
  { const CPortHost host(alone); }
  EXPECT_EQ(report(), "not complete: the host ended where line 3 is expected\n");
}

// Started by ctest with a limit on the size of files in place of a full disk.
using CFullDiskTest = CRecorderTest;

TEST_F(CFullDiskTest, CallsGoOnAndTheTranscriptEndsWithAWholeLine) {
  {
    const CPortHost host(Recorder());
    for (int i = 0; i < 2000; ++i) {
      ASSERT_EQ(host.Send("some command"), 0);
      ASSERT_EQ(host.Receive(), "some command");
      ASSERT_EQ(GetLastError(), 1003U);
    }
  }
  std::string text;
  const tagTranscript transcript = Transcript(&text);
  EXPECT_LE(text.size(), 64U << 10) << "there is no limit: this test is started by ctest";
  EXPECT_GT(text.size(), 60U << 10);
  EXPECT_TRUE(text.ends_with("\n"));
  EXPECT_FALSE(transcript.has_end);
  EXPECT_TRUE(std::all_of(transcript.calls.begin(), transcript.calls.end(),
                          [](const tagCall& call) { return call.is_finished; }));
}

int RunAsHost(const std::string& what) {
  const CPortHost host(fs::path("Ferrolink.dll"));
  if (what == "hang") {
    for (int i = 0; i < 100; ++i) {
      host.terminate();
    }
    host.Send("hang");
    return 1;
  }
  std::vector<std::thread> threads;
  std::atomic<int> failures = 0;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int call = 0; call < 100; ++call) {
        failures += host.Send(std::to_string(GetCurrentThreadId())) == 0 ? 0 : 1;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  // Without unloading it: the end of the process is the end of the recording.
  std::exit(failures == 0 ? 0 : 2);
}

}  // namespace
}  // namespace recorder::test

int main(int argc, char** argv) {
  if (argc == 2 && argv[1][0] != '-') {
    return recorder::test::RunAsHost(argv[1]);
  }
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
