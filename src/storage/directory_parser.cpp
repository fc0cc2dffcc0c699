#include "storage/directory_parser.h"

#include <algorithm>

#include "command/byte_words.h"

namespace tavira {
namespace {

constexpr std::size_t kShortestLine = 30;
constexpr std::size_t kDeviceColumn = 2;
constexpr std::size_t kNameColumn = 4;
constexpr std::size_t kNameSize = 12;
constexpr std::size_t kMarkColumn = 25;
/** What a listing may claim before it has shown that many files. */
constexpr std::size_t kMostReserved = 16384;
constexpr char kReturn = '\r';
constexpr char kLineFeed = '\n';

std::size_t FindLineEnd(std::string_view text) {
  std::size_t at = 0;
  for (; text.size() - at >= sizeof(ByteWord); at += sizeof(ByteWord)) {
    const ByteWord word = LoadWord(text.data() + at);
    const ByteWord ends = MarkEqualBytes(word, kReturn) | MarkEqualBytes(word, kLineFeed);
    if (ends != 0) {
      return at + FirstMark(ends);
    }
  }
  while (at < text.size() && text[at] != kReturn && text[at] != kLineFeed) {
    ++at;
  }
  return at;
}

/** Cuts the next line off; CR LF, LF and a lone CR end a line and are not part of it. */
std::string_view TakeLine(std::string_view& text) {
  const std::size_t end = FindLineEnd(text);
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end);
  text.remove_prefix(text.starts_with(kReturn) ? 1 : 0);
  text.remove_prefix(text.starts_with(kLineFeed) ? 1 : 0);
  return line;
}

}  // namespace

std::vector<tagDirectoryEntry> ParseDirectory(std::string_view listing) {
  std::vector<tagDirectoryEntry> entries;
  entries.reserve(std::min(listing.size() / kShortestLine, kMostReserved));
  while (!listing.empty()) {
    const std::string_view line = TakeLine(listing);
    if (line.empty()) {
      break;
    }
    if (line.size() < kShortestLine || (line[kDeviceColumn] != 'E' && line[kDeviceColumn] != 'Z')) {
      continue;
    }
    entries.push_back({line.substr(kNameColumn, kNameSize), line[kMarkColumn] == 'P'});
  }
  return entries;
}

}  // namespace tavira
