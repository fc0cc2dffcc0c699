#pragma once

#include <cstdint>

#include "discovery/spooler_lookup.h"
#include "link/printer_port.h"

namespace tavira {

/** Which printer all exchanges go to. */
class CPortSelection {
 public:
  CPortSelection(CPrinterPort& port, ISpoolerLookup& spooler) : port_(port), spooler_(spooler) {}

  /**
   * Makes the port description from a record, a spooler port name, or both; both null makes an empty one.
   * Replaces the earlier one whole. 0, −2 without a link, −3: there is no description; the port name is kept
   * when it was found.
   */
  std::int32_t Select(const TvmgrFoundPrinter* record, const TvmgrChar* port_name);

  /**
   * Writes the choice into the host's record. 0, −2 without a link or a record, −3 (the record is unchanged).
   */
  std::int32_t Report(TvmgrFoundPrinter* record) const;

 private:
  CPrinterPort& port_;
  ISpoolerLookup& spooler_;
  WideString port_name_;
};

}  // namespace tavira
