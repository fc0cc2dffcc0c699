#include "files/backup_progress.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "output/text_encoding.h"

namespace tvmgr {

std::string CBackupProgress::Now() {
  // Each stored file begins with one of these, and its payload holds neither.
  constexpr std::string_view kHeads[] = {"~DYE:", "^DFE:"};
  std::ifstream stream(std::filesystem::path(ToWide(path_)), std::ios::binary);
  stream.seekg(static_cast<std::streamoff>(seen_));
  char block[65'536];
  while (stream.read(block, sizeof block), stream.gcount() > 0) {
    const auto count = static_cast<std::size_t>(stream.gcount());
    seen_ += count;
    const std::string text = last_ + std::string(block, count);
    for (const std::string_view head : kHeads) {
      for (std::size_t at = text.find(head); at != std::string::npos; at = text.find(head, at + 1)) {
        ++downloads_;
      }
    }
    last_ = text.substr(text.size() - std::min<std::size_t>(text.size(), kHeads[0].size() - 1));
  }
  return "file " + std::to_string(std::min(downloads_ + 1, files_)) + " of " + std::to_string(files_) + ", " +
         std::to_string(seen_) + " bytes written";
}

}  // namespace tvmgr
