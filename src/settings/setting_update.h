#pragma once

#include <cstdint>

#include "link/printer_port.h"
#include "settings/full_load.h"
#include "settings/resolution_guard.h"
#include "settings/setting_store.h"

namespace tavira {

/** Writes the update list to the printer, makes it save, and proves it by reading back. */
class CSettingUpdate {
 public:
  CSettingUpdate(CPrinterPort& port, CSettingStore& store, CResolutionGuard& guard, CFullLoad& full_load)
      : port_(port), store_(store), guard_(guard), full_load_(full_load) {}

  /**
   * 0 when the printer reports every written value, −82 when one still differs after ten passes, −2 without a
   * link, else the code of the step that failed.
   */
  std::int32_t Run(bool no_resolution_change);

 private:
  std::int32_t Write(bool no_resolution_change);
  std::int32_t Verify();
  bool PrinterReportsUpdates() const;

  CPrinterPort& port_;
  CSettingStore& store_;
  CResolutionGuard& guard_;
  CFullLoad& full_load_;
};

}  // namespace tavira
