#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tvmgr {

/** CRC-16 with polynomial 0x1021 and start value 0: over the base64 text of a download command. */
std::uint16_t DownloadChecksum(std::string_view text);

/** The head of the download command of an object, "~DYE:NAME,form,kind,bytes,row,". */
struct tagObjectHead {
  std::uint64_t stored_bytes = 0; /**< size of the file on the printer */
  std::size_t data_begin = 0;     /**< where the data begins, from the beginning of the command */
};

/** The head, wherever among the first bytes it stands; none when there is no whole one. */
std::optional<tagObjectHead> ReadObjectHead(std::string_view command);

/** What a download command says of itself. */
struct tagStoredDownload {
  std::optional<std::uint64_t> stored_bytes; /**< only the commands of objects tell it */
  std::string_view problem;                  /**< why the printer would not take it; empty: nothing found */
};

/** Reads a download command of an object ("~DY") or of a stored format ("^DF"). */
tagStoredDownload ReadStoredDownload(std::string_view command);

}  // namespace tvmgr
