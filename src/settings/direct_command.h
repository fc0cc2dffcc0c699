#pragma once

#include <cstdint>

#include "link/printer_port.h"
#include "settings/resolution_guard.h"

namespace tavira {

/**
 * Sends the host's own bytes and the closing command as one transaction inside the guard. 0, −2 without a
 * link, −7 for null data or a length below 1, else as CPrinterPort::Exchange. The answer is not handed out.
 */
std::int32_t SendDirectCommand(CPrinterPort& port, CResolutionGuard& guard, const std::uint8_t* data,
                               std::int32_t length, bool allow_resolution_change);

}  // namespace tavira
