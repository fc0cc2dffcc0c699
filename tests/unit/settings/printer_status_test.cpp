#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

using PrinterStatusTest = CTransactionTest;

std::uint32_t Status() {
  std::uint32_t status = 99;
  EXPECT_EQ(TVMGR_OK, TVMGR_GetPrinterStatus(&status));
  return status;
}

TEST_F(PrinterStatusTest, AStateIsReducedToFourNumbers) {
  const std::pair<const char*, std::uint32_t> cases[] = {
      {"IL", 1}, {"il", 1}, {"Il", 1},  {"SP", 2},  {"PR", 2},  {"CL", 2},  {"OF", 2},   {"of", 2}, {"pR", 2},
      {"ER", 3}, {"I", 3},  {"ILX", 3}, {" IL", 3}, {"IL ", 3}, {",IL", 3}, {"PRSP", 3}, {"", 0},
  };
  for (const auto& [state, status] : cases) {
    world_.printer.Quirks().fixed_answers = {{"SMA,S", state}};
    EXPECT_EQ(status, Status()) << state;
  }
}

TEST_F(PrinterStatusTest, IsOneExchangeWithoutTheGuard) {
  world_.printer.SetSetting("CLR,Z", "300");
  EXPECT_EQ(TVMGR_STATUS_IDLE, static_cast<int>(Status()));
  EXPECT_EQ(Transactions{kStatus}, world_.Sent());
  EXPECT_EQ((std::vector<EPortCall>{EPortCall::kInitialize, EPortCall::kSend, EPortCall::kPoll,
                                    EPortCall::kRead, EPortCall::kTerminate}),
            world_.calls);
  EXPECT_EQ(1, world_.port.LastPortType());
  EXPECT_EQ(0, world_.port.BadFrameCount());
  SelectNetwork();
  Status();
  EXPECT_EQ(2, world_.port.LastPortType());
}

TEST_F(PrinterStatusTest, WaitsThreeSecondsForTheAnswer) {
  const std::pair<std::uint32_t, std::uint32_t> cases[] = {{0, 1}, {2900, 1}, {3000, 1}, {3001, 0}};
  for (const auto& [latency_ms, status] : cases) {
    world_.port.Faults().latency_ms = latency_ms;
    EXPECT_EQ(status, Status()) << latency_ms;
  }
  world_.port.Faults().silent = true;
  const std::uint64_t start = world_.clock.Now();
  EXPECT_EQ(0U, Status());
  EXPECT_EQ(3000U, world_.clock.Now() - start);
}

TEST_F(PrinterStatusTest, AnotherOrACutAnswerIsNoState) {
  world_.port.Faults().cut_answer_at = 10;  // no closing mark
  EXPECT_EQ(0U, Status());
  world_.port.Faults() = {};
  world_.printer.Quirks().unanswered_keys = {"SMA,S"};
  EXPECT_EQ(0U, Status());
}

TEST_F(PrinterStatusTest, WithoutAPlaceForTheStatusNothingIsAsked) {
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_GetPrinterStatus(nullptr));
  EXPECT_TRUE(world_.calls.empty());
}

}  // namespace
}  // namespace tavira::test
