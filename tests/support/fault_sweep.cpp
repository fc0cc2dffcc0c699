#include "fault_sweep.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "allocation_faults.h"
#include "unit/discovery/network/memory_network.h"

namespace tavira::test {
namespace {

constexpr std::uint32_t kMostFaults = 20000;

struct tagFaultKind {
  EFault kind;
  const char* name;
  std::int32_t own_result; /**< 0: none, the operation goes on without what it asked for */
  bool lasting = false;    /**< what has failed goes on failing: a full disk, a cable pulled */
};

constexpr tagFaultKind kKinds[] = {
    {EFault::kPortCall, "port calls", kInjectedPortCode},
    {EFault::kPortCall, "port calls, and all after", kInjectedPortCode, true},
    {EFault::kAllocation, "allocations", TVMGR_OUT_OF_MEMORY},
    {EFault::kFileCall, "file calls", TVMGR_FILE_ERROR},
    {EFault::kFileCall, "file calls, and all after", TVMGR_FILE_ERROR, true},
    {EFault::kRegistryCall, "registry calls", TVMGR_OK},
    {EFault::kDeviceCall, "device calls (SetupAPI)", TVMGR_OK},
    {EFault::kSocketCall, "socket calls", TVMGR_SEARCH_FAILED},
    {EFault::kThreadStart, "thread starts", TVMGR_PORT_NOT_READY},
};

/** Two printers on a network in memory. */
struct tagNetwork {
  explicit tagNetwork(CTestWorld& world) : sockets(world.clock, {{}, {}}) { world.sockets = &sockets; }

  CMemoryNetwork sockets;
};

void SelectAPrinter() {
  const WideString path = Wide("\\\\?\\usb#lx");
  TvmgrFoundPrinter record{};
  record.text3 = path.c_str();
  TVMGR_UpdatePortComInfo(&record, nullptr);
}

bool IsStated(const tagSweptOperation& operation, const tagFaultKind& fault, std::int32_t result) {
  const auto stated = operation.results.find(fault.kind);
  return (result == fault.own_result && result != TVMGR_OK) || result == TVMGR_OUT_OF_MEMORY ||
         (stated != operation.results.end() && stated->second.contains(result));
}

/** Runs the operation with fault number `nth`; true when the fault was reached. */
bool RunInWorld(const tagSweptOperation& operation, const tagFaultKind& fault, std::uint32_t nth) {
  SCOPED_TRACE(operation.name + ": " + fault.name + ", " + std::to_string(nth));
  CTestWorld world;
  tagNetwork network(world);
  EXPECT_EQ(TVMGR_OK, TVMGR_Initialize());
  SelectAPrinter();
  if (operation.arrange) {
    operation.arrange(world);
  }
  world.ClearLog();
  const int open_before = COpenObject::Count();
  std::int32_t result = 0;
  CFaults::Arm(fault.kind, nth, fault.lasting);
  EXPECT_NO_THROW(result = operation.run());
  const bool reached = CFaults::Disarm();
  const EFault struck = reached ? fault.kind : EFault::kNone;
  EXPECT_TRUE(reached ? IsStated(operation, fault, result) : result == TVMGR_OK) << result;
  EXPECT_TRUE(result != TVMGR_OK || operation.is_done(world, struck)) << "0, and it is not so";
  EXPECT_TRUE(!operation.holds || fault.lasting || operation.holds(world, result, struck)) << result;
  EXPECT_EQ(world.Count(EPortCall::kInitialize), world.Count(EPortCall::kTerminate));
  EXPECT_FALSE(world.port.IsOpen());
  EXPECT_EQ(open_before, COpenObject::Count());
  EXPECT_EQ(0U, network.sockets.OpenSockets());
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(true, 0)) << "the manager is no longer usable";
  EXPECT_EQ(world.printer.Setting("IMP,S"), StoredValue(TVMGR_SETTING_IMP_S));
  TVMGR_Terminate();
  return reached;
}

/** The same; and every block of memory that came into being with it is gone. */
bool RunOnce(const tagSweptOperation& operation, const tagFaultKind& fault, std::uint32_t nth) {
  const std::int64_t blocks = CAllocationFaults::Blocks();
  const bool reached = RunInWorld(operation, fault, nth);
  // What is made once and kept belongs to the first run.
  EXPECT_TRUE(nth == 1 || blocks == CAllocationFaults::Blocks())
      << operation.name << ": " << fault.name << ", " << nth << ": " << CAllocationFaults::Blocks() - blocks;
  return reached;
}

/** How many faults struck. */
std::uint32_t Sweep(const tagSweptOperation& operation, const tagFaultKind& fault) {
  const auto failures = [] {
    return ::testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
  };
  const int failures_before = failures();
  std::uint32_t nth = 1;
  while (nth < kMostFaults && failures() == failures_before && RunOnce(operation, fault, nth)) {
    ++nth;
  }
  EXPECT_GT(kMostFaults, nth) << operation.name << " never got through";
  return nth - 1;
}

}  // namespace

void SweepFaults(const std::vector<tagSweptOperation>& operations) {
  std::printf("fault class                operations  injections\n");
  for (const tagFaultKind& fault : kKinds) {
    std::uint32_t reached_in = 0;
    std::uint32_t injections = 0;
    for (const tagSweptOperation& operation : operations) {
      const std::uint32_t struck = Sweep(operation, fault);
      reached_in += struck == 0 ? 0 : 1;
      injections += struck;
    }
    EXPECT_NE(0U, injections) << fault.name << " were never reached";
    std::printf("%-26s %10u %11u\n", fault.name, reached_in, injections);
  }
}

}  // namespace tavira::test
