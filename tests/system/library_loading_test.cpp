#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <fstream>

#include "platform/platform.h"

namespace tavira {
namespace {

TEST(LibraryLoadingTest, ADamagedLibraryIsRefusedWithoutABoxOfTheSystem) {
  const auto platform = MakePlatform();
  std::ofstream("damaged_library.dll") << "MZ, and nothing that follows it";
  for (const DWORD mode : {DWORD{0}, DWORD{SEM_NOOPENFILEERRORBOX}}) {
    ASSERT_TRUE(::SetThreadErrorMode(mode, nullptr));
    EXPECT_EQ(nullptr, platform->Modules().Load("damaged_library.dll"));
    EXPECT_EQ(mode, ::GetThreadErrorMode());  // the host's own, when it is over
  }
  ASSERT_NE(nullptr, platform->Modules().Load("error_mode_probe.dll"));
  std::array<wchar_t, 8> seen{};
  ::GetEnvironmentVariableW(L"ERROR_MODE_PROBE", seen.data(), static_cast<DWORD>(seen.size()));
  EXPECT_STREQ(L"quiet", seen.data());
}

}  // namespace
}  // namespace tavira
