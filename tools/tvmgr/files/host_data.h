#pragma once

#include <string>
#include <string_view>

#include "options/options.h"

namespace tvmgr {

/** The bytes of a file. A file that cannot be read whole ends the command. */
std::string ReadHostFile(const std::string& path);

/**
 * Writes a file anew; ends the command when that fails. Then there is no half a file, and one that was there before
 * is as it was.
 */
void WriteHostFile(const std::string& path, std::string_view bytes);

/** Asks before a file that is there is overwritten; see Confirm. */
void ConfirmOverwriting(const std::string& path, bool agreed);

/** The bytes that a data source names: a file, text in the ANSI code page, or stdin. At least one byte. */
std::string ReadData(const tagDataSource& source);

/** The last part of a path. */
std::string FileNameOf(const std::string& path);

}  // namespace tvmgr
