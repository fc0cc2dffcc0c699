#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tvmgr {

/** What a download command says of itself. */
struct tagStoredDownload {
  std::optional<std::uint64_t> stored_bytes; /**< size on the printer; only the commands of objects tell it */
  std::size_t size = 0;                      /**< bytes of the whole command; 0 when there is a problem */
  std::string_view problem; /**< why the printer would not store the file; empty: nothing found */
};

/**
 * Reads the command that stores a file, in the form in which the printer itself sends it: of an object
 * "~DYE:NAME,B,kind,bytes,row,data" with the data as ":B64:text:checksum", ":Z64:text:checksum" (compressed)
 * or as so many bytes; of a format "^XA^DFE:NAME^FS...^XZ". Encoded data is decoded and counted.
 *
 * @param name   the file's name, which the command has to carry as well
 * @param bytes  begin with the command and may go on behind it
 */
tagStoredDownload ReadStoredDownload(std::string_view name, std::string_view bytes);

/**
 * The bytes that the printer stores for a whole download command: an object's, decoded and inflated, or what
 * stands between a format's name and its end. None when the command is not whole.
 */
std::optional<std::string> BytesOfDownload(std::string_view name, std::string_view command);

}  // namespace tvmgr
