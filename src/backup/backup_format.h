#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

#include "settings/setting_store.h"

namespace tavira {

/**
 * The pieces of a backup file: the printer's own commands in lines that end with CR LF. Nothing carries a
 * length or a checksum; a file of whole pieces is well-formed.
 */

/** Ends every backup, also one that stopped half way. */
inline constexpr std::string_view kBackupTrailer = "^XA^H(E^XZ\r\n";

/** Three lines: what the file is, when it was written (local time), the letters of its sections. */
std::string FormatBackupHeader(const std::tm& local_time, std::string_view section_letters);

/**
 * The stored values as set commands in the order in which a printer must take them, the prefix change, the
 * save.
 */
std::string FormatSettingsBlock(const CSettingStore& store);

/**
 * One stored file. `ansi_name` with extension, without device; `download_command` as the printer answered it;
 * `mark` sets the file's attribute again. Without a download command only the separator line.
 */
std::string FormatFileBlock(std::string_view ansi_name, std::string_view download_command, bool mark);

}  // namespace tavira
