#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

// What goes over the port for plain operations: tests/unit/manager/exchange_scripts.txt.
using FileDeletionTest = CTransactionTest;

TEST_F(FileDeletionTest, WithoutANameNothingIsSent) {
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DeleteData());  // no request yet
  SetRequest(TVMGR_REQUEST_DELETE_GRAPHIC, "A.PNG", "second");
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdateRegistList(TVMGR_REQUEST_DELETE_GRAPHIC, nullptr, 5, nullptr, 5));
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DeleteData());
  SetRequest(TVMGR_REQUEST_DELETE_GRAPHIC, std::string_view("\0A.PNG", 6));
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DeleteData());
  SetRequest(0, "");
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DeleteData());
  EXPECT_TRUE(world_.calls.empty());
}

TEST_F(FileDeletionTest, ACodeOfThePortThatReadsLikeStillListedEndsItToo) {
  world_.before_send = [this] { world_.printer.PutFile("E:A.PNG", "x"); };
  SetRequest(TVMGR_REQUEST_DELETE_GRAPHIC, "A.PNG");
  world_.port.Faults().call_faults = {{lxemu::PortCall::kInitialize, 2, TVMGR_NOT_CONFIRMED, 0}};
  EXPECT_EQ(TVMGR_NOT_CONFIRMED, TVMGR_DeleteData());
  EXPECT_EQ(1U, world_.Sent().size());
}

}  // namespace
}  // namespace tavira::test
