#include "faults.h"

#include "allocation_faults.h"

namespace tavira::test {
namespace {

std::atomic<EFault> armed = EFault::kNone;
std::atomic<std::uint32_t> calls_left = 0;
std::atomic<bool> is_lasting = false;
std::atomic<bool> was_reached = false;

}  // namespace

void CFaults::Arm(EFault kind, std::uint32_t nth, bool lasting) {
  calls_left = nth;
  is_lasting = lasting;
  was_reached = false;
  armed = kind;
  if (kind == EFault::kAllocation) {
    CAllocationFaults::Arm(nth);
  }
}

bool CFaults::Disarm() {
  return armed.exchange(EFault::kNone) == EFault::kAllocation ? CAllocationFaults::Disarm()
                                                              : was_reached.load();
}

bool CFaults::Strikes(EFault kind) {
  if (armed != kind) {
    return false;
  }
  if (calls_left == 0) {
    return is_lasting;
  }
  if (--calls_left != 0) {
    return false;
  }
  was_reached = true;
  return true;
}

}  // namespace tavira::test
