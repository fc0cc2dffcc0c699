#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

using DirectCommandTest = CTransactionTest;

TEST_F(DirectCommandTest, SendsTheBytesUnchangedAndTheClosingCommand) {
  LoadAll();
  for (const std::string& commands : {std::string("~HS"), std::string("^XA^FDx^FS^XZ"),
                                      std::string("\0\x02\x10\x1B\xFF,", 6), std::string(1, '\0')}) {
    for (const bool allow : {false, true}) {
      world_.ClearLog();
      EXPECT_EQ(TVMGR_OK, SendDirect(commands, allow));
      EXPECT_EQ(Transactions{commands + kClosing}, world_.Sent());
    }
  }
}

TEST_F(DirectCommandTest, NothingToSendIsRefusedBeforeTheGuardStarts) {
  const std::uint8_t byte = '~';
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DirectSendCommand(nullptr, 5, true));
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DirectSendCommand(&byte, 0, true));
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DirectSendCommand(&byte, -1, false));
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DirectSendCommand(&byte, INT32_MIN, false));
  EXPECT_TRUE(world_.calls.empty());
}

TEST_F(DirectCommandTest, ItsFailureIsReportedAfterTheRestore) {
  world_.printer.SetSetting("CLR,Z", "300");
  LoadAll();
  FailTransaction(2);
  EXPECT_EQ(kPortCode, SendDirect("~X", true));
  EXPECT_EQ((Transactions{kNeutralise, "~X" + kClosing, GuardWrite("300", "600", "600", "D")}),
            world_.Sent());
}

TEST_F(DirectCommandTest, NeitherSavesNorTouchesTheStoredValues) {
  LoadAll();
  EXPECT_EQ(TVMGR_OK, SendDirect("^XA^S(CMP,F,7^XZ~H(CMP,F", true));
  EXPECT_EQ("100", StoredValue(TVMGR_SETTING_CMP_F));
  EXPECT_EQ("7", world_.printer.Setting("CMP,F"));
  world_.printer.PowerCycle();
  EXPECT_EQ("100", world_.printer.Setting("CMP,F"));
}

TEST_F(DirectCommandTest, WaitsAMinuteForAnAnswerAndDoesWithoutOne) {
  LoadAll();
  world_.port.Faults().silent = true;
  const std::uint64_t start = world_.clock.Now();
  EXPECT_EQ(TVMGR_OK, SendDirect("~X", true));
  EXPECT_EQ(60000U, world_.clock.Now() - start);
}

}  // namespace
}  // namespace tavira::test
