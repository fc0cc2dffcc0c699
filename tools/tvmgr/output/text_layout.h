#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "names/ascii_text.h"

namespace tvmgr {

// How text meets a terminal. Pure functions on UTF-8; ill-formed bytes count as one column each.

/**
 * The text with everything made visible that moves the cursor, colours, ends a line or changes the direction of
 * writing: \xNN for one byte, \u{NNNN} for the others. What printers and the network say is shown like this.
 */
std::string MakeVisible(std::string_view utf8);

/** Columns that a terminal needs for the text: 2 for wide characters, 0 for combining ones, else 1. */
std::size_t DisplayWidth(std::string_view utf8);

/** The text in at most `columns` (at least 1), with "…" for what was cut off. */
std::string CutToWidth(std::string_view utf8, std::size_t columns);

/**
 * Breaks lines that are longer than `columns` at blanks. What is carried over stands below the line's second
 * column of text (two blanks and more stand in front of it), else below its first word.
 */
std::string WrapLines(std::string_view text, std::size_t columns);

/**
 * Undoes the escapes of shown values, \xNN and \\; `convert` makes bytes of the text between them. None when a
 * backslash begins anything else.
 */
std::optional<std::string> UndoEscapes(std::string_view text,
                                       const std::function<std::string(std::string_view)>& convert);

}  // namespace tvmgr
