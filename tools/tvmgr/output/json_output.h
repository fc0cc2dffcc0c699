#pragma once

#include <nlohmann/json.hpp>

namespace tvmgr {

/** Keeps members in the order in which they were added. */
using Json = nlohmann::ordered_json;

/** Writes a document and a line end to stdout; on one line when compact. Text that is no UTF-8 is mended. */
void PrintJson(const Json& json, bool compact = false);

}  // namespace tvmgr
