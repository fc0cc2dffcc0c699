// The DLL as a host loads it: by name, again and again. This program does not link it.
#include <gtest/gtest.h>
#include <windows.h>
// after windows.h
#include <psapi.h>

#include "emulator_folder.h"

namespace tavira::test {
namespace {

using Function = std::int32_t (*)();

Function Find(HMODULE module, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

std::size_t WorkingSet() {
  PROCESS_MEMORY_COUNTERS_EX counters{};
  counters.cb = sizeof(counters);
  ::GetProcessMemoryInfo(::GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters),
                         sizeof(counters));
  return counters.WorkingSetSize;
}

void LoadUseUnload() {
  const HMODULE module = ::LoadLibraryW(L"TaviraManager.dll");
  ASSERT_NE(nullptr, module);
  EXPECT_EQ(0, Find(module, "TVMGR_Initialize")());
  EXPECT_EQ(0, Find(module, "TVMGR_ClearLoadList")());
  EXPECT_EQ(0, Find(module, "TVMGR_Terminate")());
  ASSERT_TRUE(::FreeLibrary(module));
  ASSERT_EQ(nullptr, ::GetModuleHandleW(L"TaviraManager.dll"));
}

TEST(ModuleLoadingTest, LoadsAndUnloadsAThousandTimesWithoutGrowth) {
  const CEmulatorFolder folder;
  // What the system itself loses with each loading of its own libraries is not the module's.
  ASSERT_NE(nullptr, ::LoadLibraryW(L"WS2_32.dll"));
  for (int i = 0; i < 100; ++i) {
    LoadUseUnload();
  }
  const std::size_t before = WorkingSet();
  ASSERT_NE(0U, before);
  for (int i = 0; i < 1000; ++i) {
    LoadUseUnload();
  }
  EXPECT_LT(WorkingSet(), before + (1U << 20));
}

}  // namespace
}  // namespace tavira::test
