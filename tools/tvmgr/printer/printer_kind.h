#pragma once

#include <string>
#include <string_view>

namespace tvmgr {

/**
 * What a text that names a printer is by the look of it: "device" (a USB device path), "port" (USB001, LPT1:, IP_192.0.2.7 and
 * the like), else "address".
 */
std::string KindByLook(std::string_view text);

/** True for an IPv4 address in figures, 192.0.2.7. */
bool IsNumericAddress(std::string_view text);

}  // namespace tvmgr
