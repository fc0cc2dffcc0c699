#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

using DirectCommandTest = CTransactionTest;

TEST_F(DirectCommandTest, NothingToSendIsRefusedBeforeTheGuardStarts) {
  const std::uint8_t byte = '~';
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DirectSendCommand(nullptr, 5, true));
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DirectSendCommand(&byte, 0, true));
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DirectSendCommand(&byte, -1, false));
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DirectSendCommand(&byte, INT32_MIN, false));
  EXPECT_TRUE(world_.calls.empty());
}

}  // namespace
}  // namespace tavira::test
