#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

using FullLoadTest = CTransactionTest;

// (What goes over the port otherwise: tests/unit/manager/exchange_scripts.txt.)
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

}  // namespace
}  // namespace tavira::test
