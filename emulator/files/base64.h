#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lxemu {

/// Whether the byte may stand in base64 text: alphabet, filler, line breaks and blanks.
bool IsBase64Byte(char byte);

/// Appends the base64 form in one line.
void AppendBase64(std::string& text, std::string_view bytes);

/// The bytes of base64 text, line breaks and blanks skipped; none when the text is not whole.
std::optional<std::string> DecodeBase64(std::string_view text);

/// CRC-16/XMODEM: polynomial 0x1021, initial value 0, not reflected.
unsigned Crc16(std::string_view bytes);

}  // namespace lxemu
