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

}  // namespace tvmgr
