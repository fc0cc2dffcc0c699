#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

using FullLoadTest = CTransactionTest;

const Transactions kListings{Listing("E:*.PNG,c"), Listing("E:*.TTF,c"), Listing("E:*.TTE,c"),
                             Listing("E:*.FMT,c"), Listing("E:*.ZPL,c"), Listing("E:KORVDEF.BGD"),
                             Listing("Z:*.CNV,c"), Listing("E:*.GRF,c")};

Transactions Joined(std::initializer_list<Transactions> parts) {
  Transactions all;
  for (const Transactions& part : parts) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

TEST_F(FullLoadTest, ReadsSettingsListsBackgroundAndResolutionsInThatOrder) {
  world_.printer.PutFile("E:KORVDEF.BGD", "background");
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(true, TVMGR_SETTING_CMP_F));
  EXPECT_EQ(Joined({{kCapture, AllQueries()}, kListings, {kBackgroundUpload, kResolutionQueries}}),
            world_.Sent());
  EXPECT_EQ("background", StoredValue(TVMGR_SETTING_BACKGROUND));
}

TEST_F(FullLoadTest, GuardsTheTwoLoadsOfSettingsOnly) {
  world_.printer.SetSetting("CLR,Z", "300");
  world_.printer.SetSetting("CBB,M", "Y");
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(true, 0));
  EXPECT_EQ(Joined({{kCapture, kNeutralise, AllQueries(), GuardWrite("300", "600", "600", "D")},
                    kListings,
                    {GuardModeWrite("D"), kResolutionQueries, GuardModeWrite("D")}}),
            world_.Sent());
  // Queried as 600 inside the guard; the second load tells what the printer is set to.
  EXPECT_EQ("300", StoredValue(TVMGR_SETTING_CLR_Z));
  EXPECT_EQ("Y", StoredValue(TVMGR_SETTING_CBB_M));
}

TEST_F(FullLoadTest, TheBackgroundFollowsWhatThePrinterHolds) {
  LoadAll();
  EXPECT_EQ("", StoredValue(TVMGR_SETTING_BACKGROUND));
  const std::string bytes("\0\x02\x03~DY,:B64:", 13);
  world_.printer.PutFile("E:korvdef.bgd", bytes);
  LoadAll();
  EXPECT_EQ(bytes, StoredValue(TVMGR_SETTING_BACKGROUND));
  world_.printer.PutFile("E:KORVDEF.BGD", "");
  LoadAll();
  EXPECT_EQ("", StoredValue(TVMGR_SETTING_BACKGROUND));
}

TEST_F(FullLoadTest, AFailureInTheMiddleEndsItAndKeepsWhatWasReadBefore) {
  world_.printer.PutFile("E:KORVDEF.BGD", "background");
  world_.printer.PutFile("E:A.PNG", "x");
  for (std::uint32_t failing = 1; failing <= 11; ++failing) {
    Restart();
    EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(false, TVMGR_SETTING_IMP_S));  // captures
    world_.ClearLog();
    FailTransaction(failing);
    EXPECT_EQ(kPortCode, TVMGR_LoadSetting(true, 0)) << failing;
    EXPECT_EQ(failing, world_.Sent().size());
    EXPECT_EQ(failing > 1 ? "LX-R4100" : "(none)", StoredValue(TVMGR_SETTING_IMP_S)) << failing;
    EXPECT_EQ(failing > 2 ? 1U : 0U, Names(TVMGR_LIST_PNG).size()) << failing;
    EXPECT_EQ(failing > 10 ? "background" : "(none)", StoredValue(TVMGR_SETTING_BACKGROUND)) << failing;
  }
}

TEST_F(FullLoadTest, ASilentPrinterCostsATimeOutForEachTransaction) {
  world_.port.Faults().silent = true;
  const std::uint64_t start = world_.clock.Now();
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(true, 0));
  // Capture, neutralise, settings, restore; eight lists; mode, resolutions, mode.
  EXPECT_EQ((4U + 8 + 3) * 60000, world_.clock.Now() - start);
  EXPECT_EQ("(none)", StoredValue(TVMGR_SETTING_IMP_S));
  EXPECT_EQ("", StoredValue(TVMGR_SETTING_BACKGROUND));
}

}  // namespace
}  // namespace tavira::test
