#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

using SettingUpdateTest = CTransactionTest;

const std::string kRestore300 = GuardWrite("300", "600", "600", "D");

std::string Set(const std::string& key, const std::string& value) {
  return "^XA^S(" + key + "," + value + "^XZ";
}

TEST_F(SettingUpdateTest, WritesInListOrderSavesAndReadsBack) {
  LoadAll();
  AppendUpdate(TVMGR_SETTING_CMP_F, "7");
  AppendUpdate(999, "no such setting");
  AppendUpdate(TVMGR_SETTING_ST, "clock");
  AppendUpdate(TVMGR_SETTING_CMP_S, "8");
  AppendUpdate(TVMGR_SETTING_CCC_T, "!");
  TVMGR_UpdatePrinterSetting();
  const Transactions sent = world_.Sent();
  EXPECT_EQ(Set("CMP,F", "7") + "^XA^STclock^XZ" + Set("CMP,S", "8") + "^XA\x1E" + "CT!^XZ" + kSaving,
            sent.at(0));
  EXPECT_EQ((Transactions{AllQueries(), kResolutionQueries}),
            Transactions(sent.begin() + 1, sent.begin() + 3));
}

TEST_F(SettingUpdateTest, AnEmptyListStillSavesAndVerifies) {
  LoadAll();
  const std::uint64_t start = world_.clock.Now();
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrinterSettingNoChangeDPI());
  EXPECT_EQ((Transactions{kSaving, AllQueries(), kResolutionQueries}), world_.Sent());
  EXPECT_EQ(100U + 500 + 2 * 100, world_.clock.Now() - start);
}

TEST_F(SettingUpdateTest, AValueThatIsNeverConfirmedTakesTenPasses) {
  LoadAll();
  world_.printer.Quirks().ignore_sets = true;
  AppendUpdate(TVMGR_SETTING_CMP_F, "7");
  const std::uint64_t start = world_.clock.Now();
  EXPECT_EQ(TVMGR_NOT_CONFIRMED, TVMGR_UpdatePrinterSetting());
  EXPECT_EQ(100U + 10 * (500 + 2 * 100), world_.clock.Now() - start);
  EXPECT_EQ(1U + 10 * 2, world_.Sent().size());
}

TEST_F(SettingUpdateTest, ThePassesEndWithTheFirstThatConfirms) {
  LoadAll();
  world_.printer.Quirks().refused_keys = {"CMP,F"};
  world_.before_send = [&] {
    if (world_.Sent().size() == 1 + 2 * 2) {  // the update and two passes
      world_.printer.SetSetting("CMP,F", "7");
    }
  };
  AppendUpdate(TVMGR_SETTING_CMP_F, "7");
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrinterSetting());
  EXPECT_EQ(1U + 3 * 2, world_.Sent().size());
  EXPECT_EQ("7", StoredValue(TVMGR_SETTING_CMP_F));
}

TEST_F(SettingUpdateTest, ValuesAreComparedWithoutRegardToLetterCaseOnly) {
  const struct {
    const char* written;
    const char* reported;
    std::int32_t result;
  } cases[] = {
      {"ab1", "AB1", TVMGR_OK},
      {"AB1", "ab1", TVMGR_OK},
      {"", "", TVMGR_OK},
      {"600", "0600", TVMGR_NOT_CONFIRMED},
      {"a", "a ", TVMGR_NOT_CONFIRMED},
      {"a", "", TVMGR_NOT_CONFIRMED},
      {"", "a", TVMGR_NOT_CONFIRMED},
      {"a,b", "a", TVMGR_NOT_CONFIRMED},
  };
  for (const auto& [written, reported, result] : cases) {
    TVMGR_ClearUpdateList();
    world_.printer.Quirks().fixed_answers = {{"CMP,F", reported}};
    AppendUpdate(TVMGR_SETTING_CMP_F, written);
    EXPECT_EQ(result, TVMGR_UpdatePrinterSetting()) << written << " / " << reported;
  }
}

TEST_F(SettingUpdateTest, EverySettingOfTheListIsVerifiedButTwo) {
  const struct {
    std::uint32_t id;
    const char* value;
    std::int32_t result;
  } cases[] = {
      {TVMGR_SETTING_ST, "clock", TVMGR_OK},  // has no query
      {TVMGR_SETTING_CPC_Y, "9", TVMGR_OK},   // refused by this printer, but not compared
      {TVMGR_SETTING_CMP_S, "9", TVMGR_NOT_CONFIRMED},
      {999, "x", TVMGR_NOT_CONFIRMED},  // never stored
      {999, "", TVMGR_OK},              // never stored is the same as empty
  };
  world_.printer.Quirks().refused_keys = {"CPC,Y", "CMP,S"};
  for (const auto& [id, value, result] : cases) {
    TVMGR_ClearUpdateList();
    AppendUpdate(TVMGR_SETTING_CMP_F, "7");
    AppendUpdate(id, value);
    EXPECT_EQ(result, TVMGR_UpdatePrinterSetting()) << id << " " << value;
  }
  EXPECT_EQ("clock", world_.printer.ClockText());
}

TEST_F(SettingUpdateTest, TheVerdictSaysNothingOnTheModeOfAPrinterThatIsNotNeutralAndOnPrefixes) {
  const struct {
    std::uint32_t id;
    const char* value;
    std::int32_t result;
  } cases[] = {
      {TVMGR_SETTING_CMP_U, "D", TVMGR_OK},  // what it reads while the guard holds; "E" is put back
      {TVMGR_SETTING_CMP_U, "E", TVMGR_NOT_CONFIRMED},
      {TVMGR_SETTING_CMP_U, "F", TVMGR_NOT_CONFIRMED},
      {TVMGR_SETTING_CCC_T, "~", TVMGR_NOT_CONFIRMED},  // reads "7E"
  };
  world_.printer.SetSetting("CMP,U", "E");
  for (const auto& [id, value, result] : cases) {
    TVMGR_ClearUpdateList();
    AppendUpdate(id, value);
    EXPECT_EQ(result, TVMGR_UpdatePrinterSetting()) << id << " " << value;
    EXPECT_EQ("E", world_.printer.Setting("CMP,U"));
    EXPECT_EQ("7E", StoredValue(TVMGR_SETTING_CCC_T));
  }
}

TEST_F(SettingUpdateTest, TheBackgroundIsReadInEveryPassAndComparedLikeASetting) {
  world_.printer.PutFile("E:KORVDEF.BGD", "background");
  LoadAll();
  AppendUpdate(TVMGR_SETTING_BACKGROUND, "BACKGROUND");
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrinterSetting());
  EXPECT_EQ((Transactions{kSaving, AllQueries(), kBackgroundUpload, kResolutionQueries}), world_.Sent());
  world_.printer.PutFile("E:KORVDEF.BGD", "another");
  EXPECT_EQ(TVMGR_NOT_CONFIRMED, TVMGR_UpdatePrinterSetting());
}

TEST_F(SettingUpdateTest, ASilentPrinterConfirmsNothing) {
  LoadAll();
  AppendUpdate(TVMGR_SETTING_CMP_F, "100");
  world_.port.Faults().silent = true;
  const std::uint64_t start = world_.clock.Now();
  EXPECT_EQ(TVMGR_NOT_CONFIRMED, TVMGR_UpdatePrinterSetting());
  EXPECT_EQ(60000U + 10 * (500 + 2 * 60000), world_.clock.Now() - start);
  EXPECT_EQ("(none)", StoredValue(TVMGR_SETTING_CMP_F));
}

TEST_F(SettingUpdateTest, AChangeOfResolutionIsCapturedAnewBeforeTheReadBack) {
  LoadAll();
  AppendUpdate(TVMGR_SETTING_CLR_Z, "300");
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrinterSetting());
  EXPECT_EQ((Transactions{Set("CLR,Z", "300") + kSaving, kCapture, kNeutralise, AllQueries(), kRestore300,
                          GuardModeWrite("D"), kResolutionQueries, GuardModeWrite("D")}),
            world_.Sent());
  EXPECT_EQ("300", world_.printer.Setting("CLR,Z"));
  EXPECT_EQ("300", StoredValue(TVMGR_SETTING_CLR_Z));
}

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

TEST_F(SettingUpdateTest, APrinterThatIsNotNeutralIsPutBackAroundEveryStep) {
  world_.printer.SetSetting("CLR,Z", "300");
  AppendUpdate(TVMGR_SETTING_CMP_F, "7");
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrinterSetting());
  EXPECT_EQ(
      (Transactions{kCapture, kNeutralise, Set("CMP,F", "7") + kSaving, kRestore300, kNeutralise,
                    AllQueries(), kRestore300, GuardModeWrite("D"), kResolutionQueries, GuardModeWrite("D")}),
      world_.Sent());
  EXPECT_EQ("300", world_.printer.Setting("CLR,Z"));
}

TEST_F(SettingUpdateTest, WithoutAChangeOfResolutionTheWriteLeavesThemAlone) {
  world_.printer.SetSetting("CLR,Z", "300");
  AppendUpdate(TVMGR_SETTING_CMP_F, "7");
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrinterSettingNoChangeDPI());
  const Transactions sent = world_.Sent();
  EXPECT_EQ((Transactions{kCapture, GuardModeWrite("D"), Set("CMP,F", "7") + kSaving, GuardModeWrite("D")}),
            Transactions(sent.begin(), sent.begin() + 4));
}

TEST_F(SettingUpdateTest, TheGuardUndoesAResolutionWrittenToAPrinterThatIsNotNeutral) {
  world_.printer.SetSetting("CLR,Z", "300");
  AppendUpdate(TVMGR_SETTING_CLR_Z, "200");
  EXPECT_EQ(TVMGR_NOT_CONFIRMED, TVMGR_UpdatePrinterSetting());
  EXPECT_EQ("300", world_.printer.Setting("CLR,Z"));
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrinterSettingNoChangeDPI());
  EXPECT_EQ("200", world_.printer.Setting("CLR,Z"));
}

TEST_F(SettingUpdateTest, TheGuardUndoesAModeWrittenToAPrinterThatIsNotNeutral) {
  world_.printer.SetSetting("CMP,U", "E");
  AppendUpdate(TVMGR_SETTING_CMP_U, "F");
  EXPECT_EQ(TVMGR_NOT_CONFIRMED, TVMGR_UpdatePrinterSettingNoChangeDPI());
  EXPECT_EQ("E", world_.printer.Setting("CMP,U"));
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

TEST_F(SettingUpdateTest, AFailedWriteOfAResolutionKeepsTheCapturedState) {
  world_.printer.SetSetting("CLR,Z", "300");
  LoadAll();
  AppendUpdate(TVMGR_SETTING_CLR_P, "300");
  FailTransaction(2);
  EXPECT_EQ(kPortCode, TVMGR_UpdatePrinterSetting());
  world_.ClearLog();
  SendDirect("~X", true);
  EXPECT_EQ((Transactions{kNeutralise, "~X" + kClosing, kRestore300}), world_.Sent());
}

TEST_F(SettingUpdateTest, TheUpdateListStaysAndTheLoadListIsReplaced) {
  AppendUpdate(TVMGR_SETTING_CMP_F, "7");
  TVMGR_SetLoadList(TVMGR_SETTING_IMP_S);
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrinterSetting());
  world_.ClearLog();
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrinterSetting());
  EXPECT_EQ(Set("CMP,F", "7") + kSaving, world_.Sent().at(0));
  world_.ClearLog();
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSettingByList(true));
  EXPECT_EQ(Transactions{kResolutionQueries}, world_.Sent());
}

}  // namespace
}  // namespace tavira::test
