#include "emulator/printer/text_escape.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "emulator/files/file_name.h"
#include "emulator/printer/setting_memory.h"

namespace lxemu {
namespace {

bool IsPrintable(char byte) {
  return byte >= ' ' && byte <= '~';
}

bool IsHostNameByte(char byte) {
  constexpr std::string_view kPlainMarks = "._-";
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') ||
         kPlainMarks.find(byte) != kPlainMarks.npos;
}

bool IsReservedOnWindows(std::string_view name) {
  constexpr std::array<std::string_view, 4> kDevices = {"CON", "PRN", "AUX", "NUL"};
  const std::string base = FoldCase(name.substr(0, name.find('.')));
  const bool is_numbered = base.size() == 4 && base[3] >= '0' && base[3] <= '9' &&
                           (base.starts_with("COM") || base.starts_with("LPT"));
  return is_numbered || std::find(kDevices.begin(), kDevices.end(), base) != kDevices.end();
}

std::optional<char> HexByteAt(std::string_view text, std::size_t at) {
  if (at + 2 > text.size()) {
    return std::nullopt;
  }
  unsigned value = 0;
  const char* begin = text.data() + at;
  const auto [end, error] = std::from_chars(begin, begin + 2, value, 16);
  if (error != std::errc{} || end != begin + 2) {
    return std::nullopt;
  }
  return static_cast<char>(static_cast<unsigned char>(value));
}

}  // namespace

std::string Escaped(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (const char byte : bytes) {
    if (byte == '\r') {
      text += "\\r";
    } else if (byte == '\n') {
      text += "\\n";
    } else if (IsPrintable(byte) && byte != '\\') {
      text += byte;
    } else {
      text += "\\x" + HexByte(byte);
    }
  }
  return text;
}

std::optional<std::string> Unescaped(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      bytes += text[i];
      continue;
    }
    const std::string_view escape = text.substr(i + 1, 1);
    if (escape == "r" || escape == "n") {
      bytes += escape == "r" ? '\r' : '\n';
      ++i;
      continue;
    }
    const std::optional<char> byte = escape == "x" ? HexByteAt(text, i + 2) : std::nullopt;
    if (!byte) {
      return std::nullopt;
    }
    bytes += *byte;
    i += 3;
  }
  return bytes;
}

std::string HostFileName(std::string_view printer_name) {
  std::string host_name;
  bool must_escape = IsReservedOnWindows(printer_name);
  for (const char byte : printer_name) {
    if (must_escape || !IsHostNameByte(byte)) {
      host_name += '%' + HexByte(byte);
    } else {
      host_name += byte;
    }
    must_escape = false;
  }
  return host_name;
}

std::optional<std::string> PrinterFileName(std::string_view host_name) {
  std::string name;
  for (std::size_t i = 0; i < host_name.size(); ++i) {
    if (host_name[i] != '%') {
      name += host_name[i];
      continue;
    }
    const std::optional<char> byte = HexByteAt(host_name, i + 1);
    if (!byte) {
      return std::nullopt;
    }
    name += *byte;
    i += 2;
  }
  return name;
}

}  // namespace lxemu
