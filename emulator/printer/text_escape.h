#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lxemu {

/// Printable text for any bytes: control bytes, bytes above 0x7E and the backslash become \xHH, CR and LF \r
/// and \n.
std::string Escaped(std::string_view bytes);

/// The bytes of escaped text; none when a backslash starts nothing known.
std::optional<std::string> Unescaped(std::string_view text);

/// A name that every file system takes, for the name of a file in printer memory: bytes other than plain
/// letters, digits and a few marks become %HH, and so does the first letter of names that Windows keeps for
/// devices.
std::string HostFileName(std::string_view printer_name);

/// The opposite of HostFileName; none when the percent signs are not followed by two hexadecimal digits.
std::optional<std::string> PrinterFileName(std::string_view host_name);

}  // namespace lxemu
