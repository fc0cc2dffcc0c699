#pragma once

#include <string_view>

#include "files/file_kinds.h"

namespace tvmgr {

/**
 * Ends the command when the content of a host file is evidently not of the kind that it is to be stored as: a
 * printer takes such a file and shows nothing, or garbage, when a label uses it. Kinds without a mark of their own
 * pass. `row_bytes`: bytes in one row of a GRF graphic, 0 when not stated.
 */
void RequireFittingContent(std::string_view path, std::string_view bytes, const tagFileKind& kind,
                           std::uint32_t row_bytes);

/**
 * True for a fetched file that shows that its end is missing: a picture without its last chunk, a format that is not
 * closed. The module takes what a printer sends before it falls silent; most kinds have no end of their own, and
 * false says nothing of them.
 */
bool IsEvidentlyCut(std::string_view bytes, const tagFileKind& kind);

}  // namespace tvmgr
