#pragma once

#include <cstdint>
#include <string>

#include "link/printer_port.h"

namespace tavira {

/** Asks the printer for its state. */
class CPrinterStatus {
 public:
  explicit CPrinterStatus(CPrinterPort& port) : port_(port) {}

  /**
   * `status` receives a value of enum TvmgrStatus. 0, −2, −7 for null, or as the exchange. Blocks up to 3100
   * ms.
   */
  std::int32_t Get(std::uint32_t* status);

  /**
   * Asks once a second until the printer is not busy or `timeout_ms` have passed; both are 0. Opens the
   * stored port as it is: −7 when none is stored. Else −2 or as the exchange.
   */
  std::int32_t WaitWhileBusy(std::uint32_t timeout_ms);

 private:
  std::int32_t QueryOpenPort(std::string& state);
  std::int32_t PollWhileBusy(std::uint32_t timeout_ms);

  CPrinterPort& port_;
};

}  // namespace tavira
