#include <algorithm>

#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

std::int32_t SetOperation(std::uint32_t code, std::string_view data = {}) {
  return TVMGR_SetExecuteList(code,
                              data.empty() ? nullptr : reinterpret_cast<const std::uint8_t*>(data.data()),
                              static_cast<std::int32_t>(data.size()));
}

// What goes over the port for plain operations: tests/unit/manager/exchange_scripts.txt.
class PrinterOperationsTest : public CTransactionTest {
 protected:
  void SetUp() override {
    CTransactionTest::SetUp();
    world_.printer.Quirks().maintenance_ms = 0;
  }

  static std::int32_t Execute(std::uint32_t code, std::string_view data = {}) {
    EXPECT_EQ(TVMGR_OK, SetOperation(code, data));
    return TVMGR_ExecutePrinterOperation();
  }

  /** How long the busy wait of an operation took: all but its transactions and the second before it. */
  std::uint64_t TimeBusyWait(std::uint32_t code) {
    const std::uint64_t start = world_.clock.Now();
    EXPECT_EQ(TVMGR_OK, Execute(code));
    const Transactions sent = world_.Sent();
    const auto transactions = std::count_if(sent.begin(), sent.end(),
                                            [](const std::string& commands) { return commands != kStatus; });
    return world_.clock.Now() - start - static_cast<std::uint64_t>(transactions) * 100 - 1000;
  }
};

TEST_F(PrinterOperationsTest, TheDataOfAnEarlierRequestStaysUnlessNewDataComes) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>("new");
  SetOperation(TVMGR_OP_SEND_DATA, "old");
  const std::vector<std::pair<std::function<void()>, std::string>> steps{
      {[&] { TVMGR_SetExecuteList(TVMGR_OP_SEND_DATA, nullptr, 3); }, "old"},
      {[&] { TVMGR_SetExecuteList(TVMGR_OP_SEND_DATA, bytes, 0); }, "old"},
      {[&] { TVMGR_SetExecuteList(TVMGR_OP_SEND_DATA, bytes, -3); }, "old"},
      {[&] {
         Execute(TVMGR_OP_HEAD_CHECK);
         SetOperation(TVMGR_OP_SEND_DATA);
       },
       "old"},
      {[&] { TVMGR_SetExecuteList(TVMGR_OP_SEND_DATA, bytes, 3); }, "new"},
      {[] {}, "new"},  // the request itself stays after it was run
  };
  for (const auto& [step, sent] : steps) {
    step();
    world_.ClearLog();
    EXPECT_EQ(TVMGR_OK, TVMGR_ExecutePrinterOperation());
    EXPECT_EQ(sent + kClosing, world_.Sent().at(1));
  }
}

TEST_F(PrinterOperationsTest, ABusyPrinterIsAskedOnceASecondThroughOneOpenPort) {
  world_.printer.Quirks().maintenance_ms = 10000;
  std::vector<std::uint64_t> asked;
  world_.before_send = [&] { asked.push_back(world_.clock.Now()); };
  EXPECT_EQ(TVMGR_OK, Execute(TVMGR_OP_MEDIA_CALIBRATION));
  ASSERT_EQ(1U + 10, asked.size());  // the first a second after the answer, the others 1.1 s apart
  EXPECT_EQ(1100U, asked[1] - asked[0]);
  for (std::size_t i = 2; i < asked.size(); ++i) {
    EXPECT_EQ(1100U, asked[i] - asked[i - 1]);
  }
  EXPECT_EQ(2, world_.Count(EPortCall::kInitialize));
  EXPECT_EQ(2, world_.Count(EPortCall::kTerminate));
}

TEST_F(PrinterOperationsTest, TheBusyWaitIsBoundedAndItsEndNoError) {
  const std::pair<std::uint32_t, std::uint64_t> bounds[] = {
      {TVMGR_OP_HEAD_MAINTENANCE, 300000}, {TVMGR_OP_HEAD_CHECK, 60000}, {TVMGR_OP_WIPE_GRAPHICS, 60000}};
  constexpr std::uint64_t kOnePoll = 1100;
  for (const auto& [code, bound] : bounds) {
    for (const char* state : {"PR", "SP", "cl", "OF"}) {
      world_.ClearLog();
      world_.printer.Quirks().fixed_answers = {{"SMA,S", state}};
      const std::uint64_t waited = TimeBusyWait(code);
      EXPECT_LE(bound, waited) << state;
      EXPECT_GT(bound + kOnePoll, waited) << state;
    }
  }
}

TEST_F(PrinterOperationsTest, EveryOtherStateEndsTheWaitAtOnce) {
  for (const char* state : {"IL", "ER", "PRX", "P", ""}) {
    world_.ClearLog();
    world_.printer.Quirks().fixed_answers = {{"SMA,S", state}};
    EXPECT_EQ(100U, TimeBusyWait(TVMGR_OP_HEAD_CHECK)) << state;
  }
  world_.ClearLog();
  world_.printer.Quirks().unanswered_keys = {"SMA,S"};
  EXPECT_EQ(3000U, TimeBusyWait(TVMGR_OP_HEAD_CHECK));
}

TEST_F(PrinterOperationsTest, TheWaitOpensTheStoredPortAsItIs) {
  std::vector<std::int32_t> types;
  world_.before_send = [&] { types.push_back(world_.port.LastPortType()); };
  EXPECT_EQ(TVMGR_OK, Execute(TVMGR_OP_HEAD_CHECK));
  EXPECT_EQ((std::vector<std::int32_t>{1, 3}), types);
}

}  // namespace
}  // namespace tavira::test
