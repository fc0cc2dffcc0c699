#pragma once

#include <optional>
#include <string>

#include "output/record_output.h"

namespace tvmgr {

/**
 * A setting's value for a table (control bytes escaped) and JSON (text); null with "not answered" for none.
 */
tagCell ValueCell(const std::optional<std::string>& bytes);

/** JSON only: the value's bytes in hexadecimal where the text alone would not tell them; absent otherwise. */
tagCell HexCell(const std::optional<std::string>& bytes);

}  // namespace tvmgr
