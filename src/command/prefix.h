#pragma once

#include <string_view>

namespace tavira {

/**
 * Whether the answer to the prefix query shows the default prefix characters. Lenient on purpose: a silent
 * printer or an answer shorter than 11 bytes reads as default.
 */
bool IsDefaultPrefixAnswer(std::string_view answer);

}  // namespace tavira
