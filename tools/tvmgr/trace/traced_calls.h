#pragma once

namespace tvmgr {

/** From now on every call through the pointers of manager_library.h stands in the trace. After they were looked up. */
void TraceCalls();

}  // namespace tvmgr
