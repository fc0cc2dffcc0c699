#pragma once

#include <cstdint>

#include "link/printer_port.h"
#include "settings/resolution_guard.h"
#include "settings/setting_store.h"

namespace tavira {

/**
 * Reads settings from the printer into the setting store. All results: 0, −2, −7, or as
 * CPrinterPort::Exchange.
 */
class CSettingLoader {
 public:
  CSettingLoader(CPrinterPort& port, CSettingStore& store, CResolutionGuard& guard)
      : port_(port), store_(store), guard_(guard) {}

  /** Refreshes one stored value. −7 for a setting without a query; the guard has then run all the same. */
  std::int32_t LoadOne(std::int32_t id);

  /** Replaces all stored values with what the printer answers. They are gone also after a failure. */
  std::int32_t LoadAllSettings();

  /** Refreshes the stored values of the load list. The guard works with the negation of `flag`. */
  std::int32_t LoadByList(bool flag);

  /** Refreshes the resolution settings 3, 4, 5 and 76 through the load list, which keeps them. */
  std::int32_t ReloadResolutions();

 private:
  std::int32_t RefreshFromPrinter();

  CPrinterPort& port_;
  CSettingStore& store_;
  CResolutionGuard& guard_;
};

}  // namespace tavira
