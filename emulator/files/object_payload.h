#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace lxemu {

/// The data behind the fifth delimiter of a ~DY command.
struct tagPayload {
  std::size_t length = 0;            ///< bytes of the stream that belong to it
  std::optional<std::string> bytes;  ///< the file; none when it is damaged
};

/// Reads :B64: and :Z64: payloads (base64, for Z64 of a zlib stream, then ":" and four hexadecimal digits,
/// the CRC-16 of the base64 text, or none), or else `total` bytes as they stand. A payload that inflates to
/// more than `limit` bytes counts as damaged.
tagPayload ReadPayload(std::string_view text, std::size_t total, std::size_t limit);

/// Appends ":B64:" or ":Z64:", the encoded bytes and the checksum.
void AppendPayload(std::string& answer, std::string_view bytes, bool is_compressed);

}  // namespace lxemu
