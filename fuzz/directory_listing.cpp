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
  return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](const auto& a, const auto& b) {
    return a.name_field == b.name_field && a.p_mark == b.p_mark;
  });
}

std::string ListingOf(const Entries& entries) {
  std::string listing;
  for (const auto& [name_field, p_mark] : entries) {
    std::string line = "* E:" + std::string(name_field);
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
    Require(entry.name_field.size() == 12 &&
            entry.name_field.find_first_of("\r\n") == std::string_view::npos);
  }
  const std::string relisted = ListingOf(entries);
  Require(AreEqual(entries, tavira::ParseDirectory(relisted)));
  const std::string more = std::string(listing) + "\n\n" + ListingOf({{"BEHIND.PNG  ", false}});
  Require(AreEqual(entries, tavira::ParseDirectory(more)));
  return 0;
}
