// A host that links the DLL's import library and talks to the stand-in port library beside it, in real time.
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

  static std::string Value(std::int32_t id) {
    std::int32_t length = 0;
    if (!TVMGR_GetSettingValue(id, nullptr, &length)) {
      return "(none)";
    }
    std::string value(static_cast<std::size_t>(length), '\0');
    if (length > 0) {
      TVMGR_GetSettingValue(id, reinterpret_cast<std::uint8_t*>(value.data()), &length);
    }
    return value;
  }

  CEmulatorFolder folder_;
};

TEST_F(HostTest, LoadsChangesAndFindsTheChangeAgain) {
  ASSERT_EQ(TVMGR_OK, TVMGR_LoadSetting(true, 0));
  EXPECT_EQ("600", Value(TVMGR_SETTING_CLR_Z));
  EXPECT_EQ("(none)", Value(TVMGR_SETTING_ST));
  const std::string before = Value(TVMGR_SETTING_CMP_F);
  TVMGR_SetUpdateList(TVMGR_SETTING_CMP_F, reinterpret_cast<const std::uint8_t*>("host"), 4);
  ASSERT_NE("host", before);
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrinterSetting());
  EXPECT_EQ("host", Value(TVMGR_SETTING_CMP_F));
  std::uint32_t status = 9;
  EXPECT_EQ(TVMGR_OK, TVMGR_GetPrinterStatus(&status));
  EXPECT_EQ(static_cast<std::uint32_t>(TVMGR_STATUS_IDLE), status);
}

TEST_F(HostTest, RegistersFetchesAndDeletesAFile) {
  const std::string command = "~DYE:DOT,B,P,8,0,:B64:UE5HIGRhdGE=:";
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(command.data());
  TVMGR_UpdateRegistList(TVMGR_REQUEST_REGISTER_GRAPHIC, bytes, static_cast<std::uint32_t>(command.size()),
                         nullptr, 0);
  ASSERT_EQ(TVMGR_OK, TVMGR_RegistData());
  std::uint32_t length = 0;
  ASSERT_EQ(TVMGR_OK, TVMGR_GetRegistFileArrayData(TVMGR_LIST_PNG, 0, nullptr, &length));
  std::wstring name(length + 1, L'x');
  ++length;
  ASSERT_EQ(TVMGR_OK, TVMGR_GetRegistFileArrayData(TVMGR_LIST_PNG, 0, name.data(), &length));
  EXPECT_STREQ(L"DOT.PNG", name.c_str());
  ASSERT_EQ(TVMGR_OK, TVMGR_LoadStoredData(L"DOT.PNG", 0, 5000));
  char data[16] = "";
  length = sizeof(data);
  ASSERT_EQ(TVMGR_OK, TVMGR_GetStoredData(reinterpret_cast<std::uint8_t*>(data), &length));
  EXPECT_EQ(8U, length);
  EXPECT_STREQ("PNG data", data);
  TVMGR_UpdateRegistList(TVMGR_REQUEST_DELETE_GRAPHIC, reinterpret_cast<const std::uint8_t*>("DOT.PNG"), 7,
                         nullptr, 0);
  EXPECT_EQ(TVMGR_OK, TVMGR_DeleteData());
  std::uint32_t count = 9;
  EXPECT_EQ(TVMGR_OK, TVMGR_GetRegistFileArraySize(TVMGR_LIST_PNG, &count));
  EXPECT_EQ(0U, count);
}

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
