#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "storage/directory_parser.h"

namespace {

using Entries = std::vector<tavira::tagDirectoryEntry>;

void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

bool AreEqual(const Entries& left, const Entries& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](const auto& a, const auto& b) { return a.name == b.name && a.p_mark == b.p_mark; });
}

std::string ListingOf(const Entries& entries) {
  std::string listing;
  for (const auto& [name, p_mark] : entries) {
    std::string line = "* E:" + name;
    line.resize(32, ' ');
    line[25] = p_mark ? 'P' : ' ';
    listing += line + "\r\n";
  }
  return listing;
}

}  // namespace

// Whatever is read fits its field and survives being listed again; nothing behind an empty line counts.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view listing(reinterpret_cast<const char*>(data), size);
  const Entries entries = tavira::ParseDirectory(listing);
  Require(entries.size() * 30 <= size);
  for (const auto& entry : entries) {
    Require(entry.name.size() <= 12 && entry.name.find_first_of(" \r\n") == entry.name.npos);
  }
  Require(AreEqual(entries, tavira::ParseDirectory(ListingOf(entries))));
  const Entries file{{"BEHIND.PNG", false}};
  Require(AreEqual(entries, tavira::ParseDirectory(std::string(listing) + "\n\n" + ListingOf(file))));
  return 0;
}
