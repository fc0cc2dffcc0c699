// The DLL as a host loads it: by name, again and again, and how it ends. This program does not link it.
#include <gtest/gtest.h>
#include <windows.h>
// after windows.h
#include <psapi.h>
#include <tlhelp32.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "emulator_folder.h"

namespace tavira::test {
namespace {

constexpr DWORD kSearchMs = 3000;

std::uint32_t SearchKind() {
  // A broadcast is for networks of the tests' own alone. Any other kind has a worker too.
  return std::getenv("TAVIRA_TEST_NETWORK") != nullptr ? 1U : 7U;
}

std::size_t PrivateBytes() {
  PROCESS_MEMORY_COUNTERS_EX counters{};
  counters.cb = sizeof(counters);
  ::GetProcessMemoryInfo(::GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters),
                         sizeof(counters));
  return counters.PrivateUsage != 0 ? counters.PrivateUsage : counters.WorkingSetSize;
}

/** GetProcessHandleCount is always 0 under Wine. */
int OpenHandles() {
  int count = 0;
  for (std::uintptr_t value = 4; value < 0x8000; value += 4) {
    DWORD flags = 0;
    count += ::GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1 : 0;
  }
  return count;
}

int Threads() {
  const HANDLE all = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 thread{};
  thread.dwSize = sizeof(thread);
  int count = 0;
  for (BOOL more = ::Thread32First(all, &thread); more; more = ::Thread32Next(all, &thread)) {
    count += thread.th32OwnerProcessID == ::GetCurrentProcessId() ? 1 : 0;
  }
  ::CloseHandle(all);
  return count;
}

/** The DLL under a name of its own: a module and a manager for itself. */
class CLoadedModule {
 public:
  explicit CLoadedModule(const std::wstring& file = L"TaviraManager.dll")
      : file_(file), module_(::LoadLibraryW(file.c_str())) {
    EXPECT_NE(nullptr, module_) << ::GetLastError();
  }
  template <typename... Arguments>
  std::int32_t Call(const char* name, Arguments... arguments) const {
    const auto function = reinterpret_cast<std::int32_t (*)(Arguments...)>(
        reinterpret_cast<void*>(::GetProcAddress(module_, name)));
    return function(arguments...);
  }
  void Start() const {
    EXPECT_EQ(0, Call("TVMGR_Initialize"));
    const std::uint32_t kind = SearchKind();
    EXPECT_EQ(kind == 1 ? 0 : -7, Call("TVMGR_StartSearchPrinter", kind, std::uint32_t{0}));
  }
  void Unload() const { EXPECT_TRUE(::FreeLibrary(module_)); }
  bool IsGone() const { return ::GetModuleHandleW(file_.c_str()) == nullptr; }

 private:
  std::wstring file_;
  HMODULE module_;
};

class ModuleLoadingTest : public ::testing::Test {
 protected:
  // What the system itself loses with each loading of its own libraries is not the module's.
  void SetUp() override { ASSERT_NE(nullptr, ::LoadLibraryW(L"WS2_32.dll")); }

  /** Copies of the DLL beside the emulator's memory; the port library is loaded already. */
  std::wstring Copy(int number) const {
    const auto copy = folder_.Path() / ("Tavira" + std::to_string(number) + ".dll");
    if (!std::filesystem::exists(copy)) {
      wchar_t path[MAX_PATH];
      ::GetModuleFileNameW(nullptr, path, MAX_PATH);
      std::filesystem::copy_file(std::filesystem::path(path).replace_filename("TaviraManager.dll"), copy);
    }
    return copy.wstring();
  }

  /** Runs a round to and fro until all is loaded once, then `rounds` more: they leave nothing behind. */
  template <typename Round>
  static void ExpectFlat(int warm_up, int rounds, Round round) {
    for (int i = 0; i < warm_up; ++i) {
      round();
    }
    const int handles = OpenHandles();
    const int threads = Threads();
    const std::size_t bytes = PrivateBytes();
    ASSERT_NE(0U, bytes);
    for (int i = 0; i < rounds; ++i) {
      round();
    }
    // The last worker has left the module, and may be on its way out of the process.
    for (int i = 0; i < 100 && Threads() > threads; ++i) {
      ::Sleep(10);
    }
    std::printf("%d rounds: handles %d -> %d, threads %d -> %d, private KiB %zu -> %zu\n", rounds, handles,
                OpenHandles(), threads, Threads(), bytes >> 10, PrivateBytes() >> 10);
    EXPECT_EQ(handles, OpenHandles());
    EXPECT_GE(threads, Threads());
    EXPECT_LT(PrivateBytes(), bytes + (256U << 10));
  }

  const CEmulatorFolder folder_;
};

class ModuleNetworkTest : public ModuleLoadingTest {
 protected:
  static DWORD WINAPI Stop(void* module) {
    return static_cast<DWORD>(
        static_cast<const CLoadedModule*>(module)->Call("TVMGR_StopSearchPrinter", SearchKind()));
  }
};

TEST_F(ModuleLoadingTest, AThousandRoundsLeaveNothingBehind) {
  ExpectFlat(100, 1000, [] {
    const CLoadedModule module;
    EXPECT_EQ(0, module.Call("TVMGR_Initialize"));
    EXPECT_EQ(0, module.Call("TVMGR_ClearLoadList"));
    EXPECT_EQ(0, module.Call("TVMGR_Terminate"));
    module.Unload();
    EXPECT_TRUE(module.IsGone());
  });
}

TEST_F(ModuleLoadingTest, AThousandRoundsWithASearchLeaveNothingBehind) {
  // A search takes its 3 s: two hundred copies of the DLL search at the same time.
  constexpr int kCopies = 200;
  const CLoadedModule port_library(L"Ferrolink.dll");
  ExpectFlat(3, 1000 / kCopies, [this] {
    std::vector<CLoadedModule> modules;
    for (int i = 0; i < kCopies; ++i) {
      modules.emplace_back(Copy(i)).Start();
    }
    for (const CLoadedModule& module : modules) {
      EXPECT_EQ(0, module.Call("TVMGR_Terminate"));
      module.Unload();
      EXPECT_TRUE(module.IsGone());
    }
  });
}

TEST_F(ModuleLoadingTest, TerminateBesideACallOfAnotherThreadLeavesNothingBehind) {
  const CLoadedModule port_library(L"Ferrolink.dll");
  ExpectFlat(3, 10, [this] {
    CLoadedModule module(Copy(0));
    EXPECT_EQ(0, module.Call("TVMGR_Initialize"));
    const auto ask = [](void* asked) -> DWORD {
      std::uint32_t status = 0;
      return static_cast<DWORD>(
          static_cast<const CLoadedModule*>(asked)->Call("TVMGR_GetPrinterStatus", &status));
    };
    const HANDLE thread = ::CreateThread(nullptr, 0, ask, &module, 0, nullptr);
    ::Sleep(30);  // it waits 100 ms for the answer
    EXPECT_EQ(0, module.Call("TVMGR_Terminate"));
    DWORD result = 1;
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(thread, 1000));
    // On a busy machine it may begin when the manager is gone.
    EXPECT_TRUE(::GetExitCodeThread(thread, &result));
    EXPECT_TRUE(result == 0 || result == static_cast<DWORD>(-2)) << result;
    ::CloseHandle(thread);
    module.Unload();
    EXPECT_TRUE(module.IsGone());
  });
}

TEST_F(ModuleLoadingTest, AWorkerKeepsTheModuleUntilItEnds) {
  const CLoadedModule running(Copy(0));
  running.Start();
  running.Unload();
  const CLoadedModule replaced(Copy(1));
  replaced.Start();
  EXPECT_EQ(0, replaced.Call("TVMGR_Initialize"));
  const DWORD start = ::GetTickCount();
  EXPECT_EQ(0, replaced.Call("TVMGR_Terminate"));  // of the second manager, without a search
  EXPECT_GT(1000U, ::GetTickCount() - start);
  replaced.Unload();
  EXPECT_FALSE(running.IsGone());
  EXPECT_FALSE(replaced.IsGone());
  ::Sleep(kSearchMs + 1000);
  EXPECT_TRUE(running.IsGone());
  EXPECT_TRUE(replaced.IsGone());
}

TEST_F(ModuleLoadingTest, TerminateWaitsOutTheSearchAndTheHostCanUnload) {
  const CLoadedModule module(Copy(0));
  const DWORD start = ::GetTickCount();
  module.Start();
  EXPECT_EQ(SearchKind() == 1 ? 0 : -7, module.Call("TVMGR_StopSearchPrinter", SearchKind()));
  EXPECT_EQ(0, module.Call("TVMGR_Terminate"));
  EXPECT_LE(kSearchMs - 50, ::GetTickCount() - start);
  EXPECT_GE(kSearchMs + 500, ::GetTickCount() - start);
  module.Unload();
  EXPECT_TRUE(module.IsGone());
}

// Among printers of which one falls silent once it has announced itself. Only where network_test.sh has made a network
// for it: elsewhere this fails before it searches.
TEST_F(ModuleNetworkTest, SearchesThatAreGivenUpLeaveNoSocketBehind) {
  ASSERT_NE(nullptr, std::getenv("TAVIRA_TEST_NETWORK")) << "run this through network_test.sh";
  constexpr int kCopies = 10;
  const CLoadedModule port_library(L"Ferrolink.dll");
  ExpectFlat(1, 1, [this] {
    const int handles = OpenHandles();
    std::vector<CLoadedModule> modules;
    for (int i = 0; i < kCopies; ++i) {
      modules.emplace_back(Copy(i)).Start();
    }
    ::Sleep(1000);
    // The first half is stopped by other threads, the workers stop the second one.
    std::vector<HANDLE> threads;
    for (int i = 0; i < kCopies / 2; ++i) {
      threads.push_back(::CreateThread(nullptr, 0, &Stop, &modules[static_cast<std::size_t>(i)], 0, nullptr));
    }
    ::Sleep(kSearchMs - 1000 + 200);
    // Each has a socket for the silent one, and its worker.
    EXPECT_LE(handles + 2 * kCopies, OpenHandles());
    for (const CLoadedModule& module : modules) {
      const DWORD start = ::GetTickCount();
      EXPECT_EQ(1, module.Call("TVMGR_GetSearchPrinterStatus"));
      EXPECT_EQ(0, module.Call("TVMGR_Terminate"));
      EXPECT_GE(1000U, ::GetTickCount() - start);  // not 18 s
    }
    for (const HANDLE thread : threads) {
      EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(thread, 1000));
      DWORD result = 1;
      // On a busy machine it may begin when the manager is gone.
      EXPECT_TRUE(::GetExitCodeThread(thread, &result));
      EXPECT_TRUE(result == 0 || result == static_cast<DWORD>(-2)) << result;
      ::CloseHandle(thread);
    }
    for (const CLoadedModule& module : modules) {
      module.Unload();
      EXPECT_TRUE(module.IsGone());
    }
  });
}

}  // namespace
}  // namespace tavira::test
