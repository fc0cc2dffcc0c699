#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "files/file_kinds.h"
#include "printer/manager_session.h"

namespace tvmgr {

/** True when the kind's list, as last refreshed, holds the name; letter case does not count. */
bool IsStored(const CManagerSession& session, const tagFileKind& kind, std::string_view name);

/** The bytes that the last fetch brought; a code of the module ends the command. */
std::string FetchedData(const CManagerSession& session);

/** True for bytes that came compressed (zlib): the module leaves them so. */
bool IsCompressed(std::string_view bytes);

enum class EComparison { kEqual, kOther, kNotCompared };

/**
 * Fetches a file and compares it with what it is to hold. What the printer sends nothing for, or in a form that
 * cannot be read, is not compared.
 *
 * @param bytes  the file's own bytes; of a format what stands between its name and its end
 */
EComparison CompareStored(const CManagerSession& session, const std::string& name, std::string_view bytes);

}  // namespace tvmgr
