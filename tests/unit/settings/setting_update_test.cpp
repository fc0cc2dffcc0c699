#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

// What goes over the port for plain operations: tests/unit/manager/exchange_scripts.txt.
using SettingUpdateTest = CTransactionTest;

const std::string kRestore300 = GuardWrite("300", "600", "600", "D");

TEST_F(SettingUpdateTest, OnlyFourSettingsMakeTheCapturedStateStale) {
  const struct {
    std::uint32_t id;
    const char* value;
    bool is_captured_anew;
  } cases[] = {{TVMGR_SETTING_CLR_Z, "600", true}, {TVMGR_SETTING_CLR_P, "600", true},
               {TVMGR_SETTING_CLR_R, "600", true}, {TVMGR_SETTING_CBB_M, "Y", true},
               {TVMGR_SETTING_CMP_U, "D", false},  {TVMGR_SETTING_CMP_F, "7", false}};
  for (const auto& [id, value, is_captured_anew] : cases) {
    Restart();
    LoadAll();
    TVMGR_ClearUpdateList();
    AppendUpdate(TVMGR_SETTING_CMP_S, "8");
    AppendUpdate(id, value);
    EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrinterSettingNoChangeDPI()) << id;
    EXPECT_EQ(is_captured_anew, world_.Sent().at(1) == kCapture) << id;
    world_.ClearLog();
    SendDirect("~X", true);
    EXPECT_EQ(1U, world_.Sent().size()) << id;  // by now it is known again
  }
}

TEST_F(SettingUpdateTest, AFailureEndsItWhereItsResultCounts) {
  world_.printer.SetSetting("CLR,Z", "300");
  world_.printer.PutFile("E:KORVDEF.BGD", "background");
  AppendUpdate(TVMGR_SETTING_CMP_F, "7");
  // Neutralise, write, restore; neutralise, settings, restore; background; mode, resolutions, mode.
  const struct {
    std::uint32_t failing;
    std::int32_t result;
    std::size_t transactions;
  } cases[] = {{1, TVMGR_OK, 10},  {2, kPortCode, 3}, {3, TVMGR_OK, 10}, {4, TVMGR_OK, 10},
               {5, kPortCode, 6},  {6, TVMGR_OK, 10}, {7, kPortCode, 7}, {8, TVMGR_OK, 10},
               {9, kPortCode, 10}, {10, TVMGR_OK, 10}};
  for (const auto& [failing, result, transactions] : cases) {
    LoadAll();
    FailTransaction(failing);
    EXPECT_EQ(result, TVMGR_UpdatePrinterSetting()) << failing;
    EXPECT_EQ(transactions, world_.Sent().size()) << failing;
    EXPECT_EQ("300", world_.printer.Setting("CLR,Z")) << failing;
    EXPECT_EQ(failing == 2 ? kRestore300 : world_.Sent().back(), world_.Sent().back());
  }
}

}  // namespace
}  // namespace tavira::test
