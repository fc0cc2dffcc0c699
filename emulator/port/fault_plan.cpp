#include "emulator/port/fault_plan.h"

namespace lxemu {

bool FindCallFault(tagFaultPlan& faults, PortCall call, std::int32_t& code) {
  bool found = false;
  for (tagCallFault& fault : faults.call_faults) {
    if (fault.call == call && ++fault.seen == fault.nth) {
      code = fault.code;
      found = true;
    }
  }
  return found;
}

}  // namespace lxemu
