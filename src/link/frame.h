#pragma once

#include <string>
#include <string_view>

namespace tavira {

/**
 * The marks around the command bytes of one transmission. They never follow the printer's prefix characters.
 */
inline constexpr std::string_view kFrameStart = "\x10\x1B\x1D\x1B\x1B";
inline constexpr std::string_view kFrameEnd = "\x10\x1B\x1D\x1B\x1C";

/** `commands` between the two marks: 10 bytes longer. Throws std::bad_alloc. */
std::string FrameCommands(std::string_view commands);

}  // namespace tavira
