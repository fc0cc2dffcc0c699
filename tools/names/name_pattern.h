#pragma once

#include <string_view>

namespace tvmgr {

/** True when the text holds * or ?, which no name of a setting or file does. */
bool IsPattern(std::string_view text);

/**
 * True when the whole name is as the pattern says: * stands for any characters, ? for one; ASCII letters match in
 * either case. UTF-8; the time grows with the product of both lengths at most.
 */
bool MatchesPattern(std::string_view pattern, std::string_view name);

}  // namespace tvmgr
