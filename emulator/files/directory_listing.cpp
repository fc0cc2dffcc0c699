#include "emulator/files/directory_listing.h"

#include <algorithm>

namespace lxemu {
namespace {

constexpr std::size_t kSizeEnd = 25;  // one behind the last digit, and the column of the protect mark
constexpr std::size_t kLineLength = 32;
constexpr std::uint64_t kLargestShownSize = 99'999'999;

void AppendFileLine(std::string& text, const tagStoredFile& file) {
  std::string line = std::string("* ") + file.name.device + ':' + file.name.name;
  line.resize(kLineLength, ' ');
  const std::string size = std::to_string(std::min<std::uint64_t>(file.bytes.size(), kLargestShownSize));
  line.replace(kSizeEnd - size.size(), size.size(), size);
  if (file.is_protected) {
    line[kSizeEnd] = 'P';
  }
  text += line + "\r\n";
}

}  // namespace

std::string DirectoryListing(const CFileStore& files, char device, std::string_view pattern,
                             std::uint64_t capacity) {
  std::string text = std::string("- DIR ") + device + ':';
  text.append(pattern).append("\r\n");
  for (const tagStoredFile* file : files.Matching(device, pattern)) {
    AppendFileLine(text, *file);
  }
  const std::uint64_t used = files.BytesOn(device);
  text += "- " + std::to_string(capacity - std::min(capacity, used)) + " bytes free on " + device + ":\r\n";
  return text;
}

}  // namespace lxemu
