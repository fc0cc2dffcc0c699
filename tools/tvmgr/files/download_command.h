#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "files/file_kinds.h"

namespace tvmgr {

/**
 * The command that stores an object (graphic, font, background file) on device E:, with the bytes in base64
 * and a checksum: "~DYE:NAME,B,x,total,row,:B64:...:crc".
 *
 * @param row_bytes  bytes in one row of a GRF graphic, 0 for everything else
 */
std::string MakeObjectDownload(std::string_view name, const tagFileKind& kind, std::string_view bytes,
                               std::uint32_t row_bytes);

/**
 * The command that stores a format on device E:, "^XA^DFE:NAME^FS...^XZ", for a text with or without its own
 * ^XA and ^XZ. Ends the command when the text holds more than one format.
 */
std::string MakeFormatDownload(std::string_view name, std::string_view text);

/**
 * What a file on the host holds: a download command (a fetched format, a piece of a backup) or anything else.
 */
enum class EDownload { kNone, kObject, kFormat };
EDownload RecognizeDownload(std::string_view bytes);

/**
 * The file name in a download command, without device, with the extension where one is stated; else empty.
 */
std::string NameInDownload(std::string_view command);

}  // namespace tvmgr
