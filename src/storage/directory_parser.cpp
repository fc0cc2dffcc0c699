#include "storage/directory_parser.h"

namespace tavira {
namespace {

constexpr std::size_t kShortestLine = 30;
constexpr std::size_t kDeviceColumn = 2;
constexpr std::size_t kNameColumn = 4;
constexpr std::size_t kNameSize = 12;
constexpr std::size_t kMarkColumn = 25;
constexpr std::string_view kLineEnds = "\r\n";

/** Cuts the next line off; CR LF, LF and a lone CR end a line and are not part of it. */
std::string_view TakeLine(std::string_view& text) {
  const std::size_t end = text.find_first_of(kLineEnds);
  const std::string_view line = text.substr(0, end);
  if (end == std::string_view::npos) {
    text = {};
  } else {
    text.remove_prefix(end + (text.substr(end, 2) == kLineEnds ? 2 : 1));
  }
  return line;
}

}  // namespace

std::vector<tagDirectoryEntry> ParseDirectory(std::string_view listing) {
  std::vector<tagDirectoryEntry> entries;
  while (!listing.empty()) {
    const std::string_view line = TakeLine(listing);
    if (line.empty()) {
      break;
    }
    if (line.size() < kShortestLine || (line[kDeviceColumn] != 'E' && line[kDeviceColumn] != 'Z')) {
      continue;
    }
    const std::string_view field = line.substr(kNameColumn, kNameSize);
    entries.push_back({std::string(field.substr(0, field.find(' '))), line[kMarkColumn] == 'P'});
  }
  return entries;
}

}  // namespace tavira
