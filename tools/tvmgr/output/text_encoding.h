#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "names/ascii_text.h"

namespace tvmgr {

// The program keeps all text as UTF-8. Windows and the module take UTF-16, the printer takes bytes of the
// system's ANSI code page.

std::wstring ToWide(std::string_view utf8);
std::string ToUtf8(std::wstring_view wide);

/** Text as the printer takes it; none when the ANSI code page lacks one of its characters. */
std::optional<std::string> ToAnsi(std::string_view utf8);

/** As ToAnsi, but ends the command when the text cannot be written in the ANSI code page. */
std::string RequireAnsi(std::string_view utf8);

/** Bytes of the printer as UTF-8 text; none when they are not valid in the ANSI code page. */
std::optional<std::string> FromAnsi(std::string_view bytes);

/** Bytes of the printer for a terminal: readable characters as they are, everything else as \xNN. */
std::string EscapeBytes(std::string_view bytes);

/** The bytes that EscapeBytes shows so; ends the command (usage) at an escape that it never writes. */
std::string BytesOfShown(std::string_view utf8);

}  // namespace tvmgr
