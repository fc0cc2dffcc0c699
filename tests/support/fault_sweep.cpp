#include "fault_sweep.h"

#include <gtest/gtest.h>

#include "allocation_faults.h"

namespace tavira::test {
namespace {

constexpr std::int32_t kInjectedCode = 4242;
constexpr std::uint32_t kMostFaults = 20000;

void SelectAPrinter() {
  const WideString path = Wide("\\\\?\\usb#lx");
  TvmgrFoundPrinter record{};
  record.text3 = path.c_str();
  TVMGR_UpdatePortComInfo(&record, nullptr);
}

void ExpectInvariants(const tagSweptOperation& operation, CTestWorld& world) {
  EXPECT_EQ(world.Count(EPortCall::kInitialize), world.Count(EPortCall::kTerminate));
  EXPECT_FALSE(world.port.IsOpen());
  if (operation.check) {
    operation.check(world);
  }
  world.fail_call = 0;
  world.fail_file_call = 0;
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(true, 0)) << "the manager is no longer usable";
  EXPECT_EQ(world.printer.Setting("IMP,S"), StoredValue(TVMGR_SETTING_IMP_S));
}

/** Runs the operation with fault number `nth`; true when the fault was reached. */
bool RunOnce(const tagSweptOperation& operation, std::uint32_t nth,
             const std::function<std::int32_t(CTestWorld&, bool& reached)>& run) {
  SCOPED_TRACE(operation.name + ", fault " + std::to_string(nth));
  CTestWorld world;
  EXPECT_EQ(TVMGR_OK, TVMGR_Initialize());
  SelectAPrinter();
  if (operation.arrange) {
    operation.arrange(world);
  }
  world.ClearLog();
  bool reached = false;
  std::int32_t result = 0;
  EXPECT_NO_THROW(result = run(world, reached));
  EXPECT_TRUE(result == kInjectedCode || result == TVMGR_OUT_OF_MEMORY || operation.results.contains(result))
      << result;
  ExpectInvariants(operation, world);
  TVMGR_Terminate();
  return reached;
}

void Sweep(const tagSweptOperation& operation,
           const std::function<std::int32_t(CTestWorld&, std::uint32_t nth, bool& reached)>& run) {
  std::uint32_t nth = 1;
  while (
      nth < kMostFaults && !::testing::Test::HasFailure() &&
      RunOnce(operation, nth, [&](CTestWorld& world, bool& reached) { return run(world, nth, reached); })) {
    ++nth;
  }
  EXPECT_LT(1U, nth) << operation.name << " met no fault at all";
  EXPECT_GT(kMostFaults, nth) << operation.name << " never got through";
}

}  // namespace

void SweepPortCalls(const tagSweptOperation& operation) {
  Sweep(operation, [&](CTestWorld& world, std::uint32_t nth, bool& reached) {
    world.FailCall(nth, kInjectedCode);
    const std::int32_t result = operation.run();
    reached = world.call_failed;
    return result;
  });
}

void SweepFileCalls(const tagSweptOperation& operation) {
  Sweep(operation, [&](CTestWorld& world, std::uint32_t nth, bool& reached) {
    world.fail_file_call = nth;
    const std::int32_t result = operation.run();
    reached = world.file_calls.size() >= nth;
    return result;
  });
}

void SweepAllocations(const tagSweptOperation& operation) {
  Sweep(operation, [&](CTestWorld&, std::uint32_t nth, bool& reached) {
    CAllocationFaults::Arm(nth);
    std::int32_t result = 0;
    try {
      result = operation.run();
    } catch (...) {
      CAllocationFaults::Disarm();
      throw;
    }
    reached = CAllocationFaults::Disarm();
    return result;
  });
}

}  // namespace tavira::test
