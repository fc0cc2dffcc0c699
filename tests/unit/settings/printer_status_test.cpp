#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

using PrinterStatusTest = CTransactionTest;

std::uint32_t Status() {
  std::uint32_t status = 99;
  EXPECT_EQ(TVMGR_OK, TVMGR_GetPrinterStatus(&status));
  return status;
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

TEST_F(PrinterStatusTest, WithoutAPlaceForTheStatusNothingIsAsked) {
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_GetPrinterStatus(nullptr));
  EXPECT_TRUE(world_.calls.empty());
}

}  // namespace
}  // namespace tavira::test
