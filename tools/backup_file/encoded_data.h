#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tvmgr {

/** The problem of data that ends too early. */
inline constexpr std::string_view kCutOff = "its data is cut off";

/** CRC-16 with polynomial 0x1021 and start value 0: over the base64 text of a download command. */
std::uint16_t DownloadChecksum(std::string_view text);

/** Encoded data of a download command, behind its marker: "base64text:checksum". */
struct tagEncodedData {
  std::size_t size = 0;     /**< of the text with its checksum; 0 when there is a problem */
  std::string_view problem; /**< empty: the data is whole */
};

/**
 * Reads and checks the data that the text begins with: alphabet and padding, checksum, and the size of what it
 * decodes to.
 *
 * @param compressed    the decoded bytes are a zlib stream, to be inflated
 * @param stored_bytes  the size that the data has to come to
 * @param stored        receives the bytes; null: they are only counted
 */
tagEncodedData ReadEncodedData(std::string_view text, bool compressed, std::uint64_t stored_bytes,
                               std::string* stored);

/** The bytes of a compressed file; none when they are damaged or more than `largest`. */
std::optional<std::string> Inflate(std::string_view packed, std::uint64_t largest);

}  // namespace tvmgr
