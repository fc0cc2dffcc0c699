#pragma once

#include <string>
#include <string_view>

namespace tvmgr {

/** True when all bytes are printable ASCII. */
bool IsPlainAscii(std::string_view bytes);

/** Two upper-case hexadecimal digits for each byte. */
std::string ToHex(std::string_view bytes);

std::string UpperAscii(std::string_view text);

/** Compares ASCII letters without regard to case. */
bool EqualsIgnoreCase(std::string_view left, std::string_view right);

}  // namespace tvmgr
