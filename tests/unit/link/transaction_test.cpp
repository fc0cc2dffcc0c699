#include "link/transaction.h"

#include "link/frame.h"
#include "support/allocation_faults.h"
#include "support/module_test.h"

namespace tavira::test {
namespace {

using TransactionTest = CModuleTest;

TEST(FrameTest, PutsTheMarksAroundTheCommands) {
  EXPECT_EQ(std::string("\x10\x1B\x1D\x1B\x1B", 5) + "~H(IMP,S" + std::string("\x10\x1B\x1D\x1B\x1C", 5),
            FrameCommands("~H(IMP,S"));
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

TEST_F(TransactionTest, AReadThatDeliversLessThanWasAnnouncedLeavesNoZeroBytes) {
  world_.scripted_answer = "short";
  world_.announced_beyond = 7;
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadStoredData(Wide("A.PNG").c_str(), 0, 1000));
  std::uint32_t length = 0;
  EXPECT_EQ(TVMGR_OK, TVMGR_GetStoredData(nullptr, &length));
  EXPECT_EQ(5U, length);
}

TEST_F(TransactionTest, ACountThatIsLeftUnwrittenMeansThatNothingWaits) {
  world_.leaves_counts_unwritten = true;
  const auto platform = MakePlatform();
  CPortLink link(platform->Modules());
  ASSERT_EQ(TVMGR_OK, link.Start());
  std::uint32_t count = 99;
  EXPECT_EQ(TVMGR_OK, link.WaitingBytes(count));
  EXPECT_EQ(0U, count);
}

TEST_F(TransactionTest, AFrameOf4GiBIsRefusedBeforeTheSend) {
  const auto platform = MakePlatform();
  CPortLink link(platform->Modules());
  ASSERT_EQ(TVMGR_OK, link.Start());
  const std::string byte = "x";
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, link.Send({byte.data(), std::size_t{1} << 32}));
  EXPECT_EQ(0, world_.Count(EPortCall::kSend));
}

TEST_F(TransactionTest, LargeBuffersAreGivenBackWhenTheOperationEnds) {
  const int before = CAllocationFaults::LargeBlocks();
  world_.scripted_answer.emplace(std::size_t{3} << 20, 'x');
  std::uint32_t status = 0;
  std::uint8_t is_default = 0;
  const std::function<std::int32_t()> calls[] = {
      [] { return TVMGR_LoadSetting(false, 1); },
      [] { return TVMGR_LoadSetting(true, 0); },
      [&] { return TVMGR_GetPrinterStatus(&status); },
      [&] { return TVMGR_IsDefaultPrefix(&is_default); },
      [] { return TVMGR_UpdatePrefix('~', '^', ','); },
      [] { return TVMGR_UpdatePrinterSettingNoChangeDPI(); },
  };
  AppendUpdate(6, "x");
  for (const auto& call : calls) {
    call();
    EXPECT_EQ(before + 1, CAllocationFaults::LargeBlocks()) << &call - calls;  // the script's own
  }
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadStoredData(Wide("A.PNG").c_str(), 0, 1000));
  EXPECT_EQ(before + 2, CAllocationFaults::LargeBlocks());  // the stored data, for the host to read
  world_.scripted_answer.emplace("small");
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadStoredData(Wide("A.PNG").c_str(), 0, 1000));
  EXPECT_EQ(before, CAllocationFaults::LargeBlocks());
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
