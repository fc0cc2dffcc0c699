// Long runs in virtual time; what is left at the end is compared and printed. TAVIRA_SOAK is how many times as long, and
// without it a twentieth has to do.
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "support/allocation_faults.h"
#include "support/faults.h"
#include "support/module_test.h"

namespace tavira::test {
namespace {

/** Runs `round` so often, after a tenth as often for what is made once; nothing more is left behind. */
template <typename Round>
void ExpectFlat(const char* what, int rounds, Round round) {
  const char* times = std::getenv("TAVIRA_SOAK");
  rounds = times == nullptr ? rounds / 20 : rounds * std::max(1, std::atoi(times));
  for (int i = 0; i < rounds / 10; ++i) {
    round();
  }
  const int open = COpenObject::Count();
  const std::int64_t blocks = CAllocationFaults::Blocks();
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < rounds; ++i) {
    round();
  }
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  std::printf("%-34s %7d rounds %6.1f s   memory blocks %lld -> %lld   open objects %d -> %d\n", what, rounds,
              took.count(), static_cast<long long>(blocks),
              static_cast<long long>(CAllocationFaults::Blocks()), open, COpenObject::Count());
  EXPECT_EQ(blocks, CAllocationFaults::Blocks()) << what;
  EXPECT_EQ(open, COpenObject::Count()) << what;
}

TEST(SoakTest, ManagersComeAndGo) {
  CTestWorld world;
  ExpectFlat("create and destroy", 10000, [&world] {
    world.calls.clear();
    world.symbol_lookups.clear();
    ASSERT_EQ(TVMGR_OK, TVMGR_Initialize());
    ASSERT_EQ(TVMGR_OK, TVMGR_SetLoadList(1));
    ASSERT_EQ(TVMGR_OK, TVMGR_Terminate());
  });
}

class SoakOfOneManagerTest : public CModuleTest {};

TEST_F(SoakOfOneManagerTest, ADayOfStatusPolling) {
  ExpectFlat("a day of status polling, each second", 86400, [this] {
    std::uint32_t status = 0;
    ASSERT_EQ(TVMGR_OK, TVMGR_GetPrinterStatus(&status));
    ASSERT_EQ(TVMGR_STATUS_IDLE, static_cast<std::int32_t>(status));
    world_.clock.Sleep(900);
    world_.ClearLog();
  });
}

}  // namespace
}  // namespace tavira::test
