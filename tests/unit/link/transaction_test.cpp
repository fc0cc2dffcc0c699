#include "link/transaction.h"

#include "link/frame.h"
#include "support/module_test.h"

namespace tavira::test {
namespace {

using TransactionTest = CModuleTest;

TEST(FrameTest, PutsTheMarksAroundTheCommands) {
  EXPECT_EQ(std::string("\x10\x1B\x1D\x1B\x1B", 5) + "~H(IMP,S" + std::string("\x10\x1B\x1D\x1B\x1C", 5),
            FrameCommands("~H(IMP,S"));
}

TEST_F(TransactionTest, IsOneOpenOneSendOneReadOneClose) {
  TVMGR_LoadSetting(false, 1);  // captures first
  world_.ClearLog();
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(false, 1));
  EXPECT_EQ((std::vector<EPortCall>{EPortCall::kInitialize, EPortCall::kSend, EPortCall::kPoll,
                                    EPortCall::kRead, EPortCall::kTerminate}),
            world_.calls);
}

TEST_F(TransactionTest, EvenAReadyAnswerCostsOneInterval) {
  std::uint8_t is_default = 0;
  const std::uint64_t start = world_.clock.Now();
  TVMGR_IsDefaultPrefix(&is_default);
  EXPECT_EQ(100U, world_.clock.Now() - start);
}

TEST_F(TransactionTest, WaitsForALateAnswerAcrossTheWrapOfTheTickCount) {
  TVMGR_LoadSetting(false, 1);
  LoadAll();
  world_.printer.SetSetting("IMP,S", "late");
  world_.port.Faults().latency_ms = 59900;
  ASSERT_GT(world_.clock.Now() + 59900, std::uint64_t{1} << 32);
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(false, 1));
  EXPECT_EQ("late", StoredValue(1));
}

TEST_F(TransactionTest, SilenceEndsWithTheTimeOutAndIsNoError) {
  LoadAll();
  world_.port.Faults().silent = true;
  const std::uint64_t start = world_.clock.Now();
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(false, 1));
  EXPECT_EQ(60000U, world_.clock.Now() - start);
  EXPECT_EQ(600, world_.Count(EPortCall::kPoll));
  EXPECT_EQ(0, world_.Count(EPortCall::kRead));
  EXPECT_EQ(1, world_.Count(EPortCall::kTerminate));
}

TEST_F(TransactionTest, ATimeOutOfZeroDoesNotPoll) {
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadStoredData(Wide("A.PNG").c_str(), 0, 0));
  EXPECT_EQ((std::vector<EPortCall>{EPortCall::kInitialize, EPortCall::kSend, EPortCall::kTerminate}),
            world_.calls);
}

TEST_F(TransactionTest, EveryFailureOfTheLibraryIsPassedOnAndThePortClosedOnce) {
  LoadAll();
  const std::vector<EPortCall> whole{EPortCall::kInitialize, EPortCall::kSend, EPortCall::kPoll,
                                     EPortCall::kRead};
  for (std::uint32_t nth = 1; nth <= whole.size(); ++nth) {
    CTestWorld& world = world_;
    world.ClearLog();
    world.port.Faults() = {};
    world.port.Faults().call_faults = {
        {static_cast<lxemu::PortCall>(nth - 1), 1, 1000 + static_cast<int>(nth), 0}};
    EXPECT_EQ(1000 + static_cast<int>(nth), TVMGR_LoadSetting(false, 1));
    std::vector<EPortCall> expected(whole.begin(), whole.begin() + nth);
    expected.push_back(EPortCall::kTerminate);
    EXPECT_EQ(expected, world.calls) << nth;
  }
}

}  // namespace
}  // namespace tavira::test
