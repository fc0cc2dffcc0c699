#include "output/text_layout.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>

namespace tvmgr {
namespace {

constexpr char32_t kIllFormed = 0xFFFFFFFF;

struct tagCodePoint {
  char32_t value;        /**< kIllFormed: one byte that begins no character */
  std::string_view text; /**< its bytes */
};

/** Takes the first character off the text, which is not empty. */
tagCodePoint TakeCodePoint(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t size = lead < 0x80                   ? 1
                           : lead >= 0xF0 && lead < 0xF5 ? 4
                           : lead >= 0xE0                ? 3
                           : lead >= 0xC2                ? 2
                                                         : 0;
  constexpr std::array<unsigned char, 5> kLeadBits{0, 0x7F, 0x1F, 0x0F, 0x07};
  tagCodePoint point{kIllFormed, text.substr(0, 1)};
  if (size != 0 && lead < 0xF5 && size <= text.size()) {
    char32_t value = lead & kLeadBits[size];
    bool is_whole = true;
    for (const char c : text.substr(1, size - 1)) {
      is_whole = is_whole && (static_cast<unsigned char>(c) & 0xC0) == 0x80;
      value = value << 6 | (static_cast<unsigned char>(c) & 0x3F);
    }
    if (is_whole) {
      point = {value, text.substr(0, size)};
    }
  }
  text.remove_prefix(point.text.size());
  return point;
}

bool IsWithin(char32_t value, char32_t first, char32_t last) {
  return value >= first && value <= last;
}

/** Characters that turn the direction of writing, end lines or paragraphs, or hide in words. */
bool IsLayoutControl(char32_t value) {
  return IsWithin(value, 0x200B, 0x200F) || IsWithin(value, 0x2028, 0x202E) ||
         IsWithin(value, 0x2060, 0x206F) || value == 0xFEFF || value == 0x061C;
}

std::size_t WidthOf(char32_t value) {
  if (IsWithin(value, 0x0300, 0x036F) || IsWithin(value, 0x20D0, 0x20FF) || IsWithin(value, 0xFE00, 0xFE0F)) {
    return 0;
  }
  const bool is_wide = IsWithin(value, 0x1100, 0x115F) || IsWithin(value, 0x2E80, 0xA4CF) ||
                       IsWithin(value, 0xAC00, 0xD7A3) || IsWithin(value, 0xF900, 0xFAFF) ||
                       IsWithin(value, 0xFE30, 0xFE6F) || IsWithin(value, 0xFF00, 0xFF60) ||
                       IsWithin(value, 0xFFE0, 0xFFE6) || IsWithin(value, 0x1F300, 0x1FAFF) ||
                       IsWithin(value, 0x20000, 0x3FFFD);
  return value != kIllFormed && is_wide ? 2 : 1;
}

/** Where the text that continues a line stands: see WrapLines. */
std::size_t HangingIndent(std::string_view line, std::size_t columns) {
  const std::size_t first = std::min(line.find_first_not_of(' '), line.size());
  const std::size_t gap = line.find("  ", first);
  const std::size_t second = gap == std::string_view::npos ? gap : line.find_first_not_of(' ', gap);
  const std::size_t indent = second == std::string_view::npos ? first : second;
  return indent <= columns / 2 ? indent : first;
}

}  // namespace

std::string MakeVisible(std::string_view utf8) {
  std::string visible;
  while (!utf8.empty()) {
    const tagCodePoint point = TakeCodePoint(utf8);
    std::array<char, 16> escape{};
    if (point.value == kIllFormed || point.value < 0x20 || IsWithin(point.value, 0x7F, 0x9F)) {
      const unsigned value = point.value == kIllFormed ? static_cast<unsigned char>(point.text.front())
                                                       : static_cast<unsigned>(point.value);
      std::snprintf(escape.data(), escape.size(), "\\x%02X", value);
    } else if (IsLayoutControl(point.value)) {
      std::snprintf(escape.data(), escape.size(), "\\u{%04X}", static_cast<unsigned>(point.value));
    }
    visible += escape.front() == 0 ? point.text : std::string_view(escape.data());
  }
  return visible;
}

std::size_t DisplayWidth(std::string_view utf8) {
  std::size_t width = 0;
  while (!utf8.empty()) {
    width += WidthOf(TakeCodePoint(utf8).value);
  }
  return width;
}

std::string CutToWidth(std::string_view utf8, std::size_t columns) {
  if (DisplayWidth(utf8) <= columns) {
    return std::string(utf8);
  }
  std::string cut;
  std::size_t width = 0;
  while (!utf8.empty()) {
    const tagCodePoint point = TakeCodePoint(utf8);
    width += WidthOf(point.value);
    if (width + 1 > columns) {
      break;
    }
    cut += point.text;
  }
  return cut + "…";
}

std::string WrapLines(std::string_view text, std::size_t columns) {
  std::string wrapped;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string line(text.substr(0, end));
    text.remove_prefix(end);
    const std::string indent(HangingIndent(line, columns), ' ');
    while (DisplayWidth(line) > columns) {
      const std::string head = CutToWidth(line, columns + 1);
      const std::size_t limit = head.size() - std::string_view("…").size();
      const std::size_t blank = line.rfind(' ', limit);
      if (blank == std::string::npos || line.find_last_not_of(' ', blank) == std::string::npos ||
          blank <= indent.size()) {
        break;  // one word that is longer than a line
      }
      const std::size_t next = std::min(line.find_first_not_of(' ', blank), line.size());
      wrapped += line.substr(0, line.find_last_not_of(' ', blank) + 1) + "\n";
      line = indent + line.substr(next);
    }
    wrapped += line;
    if (!text.empty()) {
      wrapped += '\n';
      text.remove_prefix(1);
    }
  }
  return wrapped;
}

std::optional<std::string> UndoEscapes(std::string_view text,
                                       const std::function<std::string(std::string_view)>& convert) {
  std::string bytes;
  for (;;) {
    const std::size_t escape = std::min(text.find('\\'), text.size());
    bytes += convert(text.substr(0, escape));
    text.remove_prefix(escape);
    if (text.empty()) {
      return bytes;
    }
    unsigned byte = 0;
    if (text.starts_with("\\\\")) {
      bytes += '\\';
      text.remove_prefix(2);
    } else if (text.size() >= 4 && text[1] == 'x' &&
               std::from_chars(text.data() + 2, text.data() + 4, byte, 16).ptr == text.data() + 4) {
      bytes += static_cast<char>(byte);
      text.remove_prefix(4);
    } else {
      return std::nullopt;
    }
  }
}

}  // namespace tvmgr
