#pragma once

#include <cstdint>

#include "command/command_builder.h"
#include "link/printer_port.h"
#include "settings/setting_loader.h"
#include "settings/setting_store.h"

namespace tavira {

/** Changes and tests the printer's prefix characters. Results: 0, −2, or as CPrinterPort::Exchange. */
class CPrefixOperations {
 public:
  CPrefixOperations(CPrinterPort& port, CSettingStore& store, CSettingLoader& loader)
      : port_(port), store_(store), loader_(loader) {}

  /** Sends and saves the three characters unchecked, then reads them back; the result of that is ignored. */
  std::int32_t Update(const tagPrefixCharacters& prefix);

  /** `is_default` (may be null) receives 1, or 0 when the printer's answer says otherwise. */
  std::int32_t IsDefault(std::uint8_t* is_default);

 private:
  CPrinterPort& port_;
  CSettingStore& store_;
  CSettingLoader& loader_;
};

}  // namespace tavira
