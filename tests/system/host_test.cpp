// A host that links the DLL's import library: what only the border between two modules shows. (Settings and files, in real
// time with the port library beside it: tests/cli and tests/bindings.)
#include <gtest/gtest.h>
#include <windows.h>

#include <stdexcept>

#include "emulator_folder.h"
#include "tavira/TaviraManager.h"

namespace tavira::test {
namespace {

class HostTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(TVMGR_OK, TVMGR_Initialize());
    TvmgrFoundPrinter record{};
    record.text3 = L"\\\\?\\usb#lx-r4100";
    ASSERT_EQ(TVMGR_OK, TVMGR_UpdatePortComInfo(&record, L"USB001"));
  }
  void TearDown() override { TVMGR_Terminate(); }

  CEmulatorFolder folder_;
};

TEST_F(HostTest, TextsCrossTheHeapsOfTwoModules) {
  for (int i = 0; i < 3; ++i) {
    TvmgrFoundPrinter record{};
    ASSERT_EQ(TVMGR_OK, TVMGR_GetPrinterDeviceInfo(&record));
    ASSERT_EQ(TVMGR_OK, TVMGR_GetPrinterDeviceInfo(&record));
    EXPECT_STREQ(L"USB001", record.text1);
    EXPECT_STREQ(L"\\\\?\\usb#lx-r4100", record.text3);
    EXPECT_STREQ(L"", record.text5);
    EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePortComInfo(&record, record.text1));
    TvmgrFoundPrinterRelease(&record);
  }
}

TEST_F(HostTest, ANegativeIndexRaisesAnExceptionThatTheHostCanCatch) {
  ASSERT_EQ(TVMGR_OK, TVMGR_LoadSetting(true, 0));
  std::uint32_t length = 0;
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_GetRegistFileArrayData(35, -1, nullptr, &length));
  EXPECT_THROW(TVMGR_GetRegistFileArrayData(TVMGR_LIST_PNG, -1, nullptr, &length), std::invalid_argument);
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(false, TVMGR_SETTING_IMP_S));
}

TEST_F(HostTest, FatalMisuseEndsTheProcessWithFastFail) {
  constexpr int kFastFail = static_cast<int>(0xC0000409);
  const auto misuse = [] {
    TVMGR_LoadSetting(true, 0);
    std::uint8_t byte = 0;
    std::int32_t length = 1;
    TVMGR_GetSettingValue(TVMGR_SETTING_BACKGROUND, &byte, &length);  // stored, and empty
  };
  EXPECT_EXIT(misuse(), ::testing::ExitedWithCode(kFastFail), "");
}

}  // namespace
}  // namespace tavira::test
