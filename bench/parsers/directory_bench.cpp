#include <cstring>
#include <stdexcept>

#include "bench/parsers/parsers_bench.h"
#include "bench/support/measure.h"
#include "storage/directory_parser.h"

namespace tavira::bench {
namespace {

constexpr std::size_t kLines = 10000;

std::string MakeListing() {
  std::string listing;
  for (std::size_t i = 0; i < kLines; ++i) {
    std::string line = "* E:F" + std::to_string(i * 7919 % 1000000) + ".PNG";
    line.resize(37, ' ');
    line[25] = i % 3 == 0 ? 'P' : ' ';
    listing.append(line).append("\r\n");
  }
  return listing;
}

std::size_t CountLines(std::string_view text) {
  std::size_t lines = 0;
  const char* at = text.data();
  const char* const end = at + text.size();
  while ((at = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)))) !=
         nullptr) {
    ++lines;
    ++at;
  }
  return lines;
}

}  // namespace

void MeasureDirectory() {
  const std::string listing = MakeListing();
  if (ParseDirectory(listing).size() != kLines) {
    throw std::runtime_error("a listing of 10,000 files has as many entries");
  }
  ReportWithin("P6", "directory of 10,000 lines, names owned", "memchr walk",
               Compare([&] { Keep(ParseDirectory(listing).data()); },
                       [&] { Keep(reinterpret_cast<void*>(CountLines(listing))); }),
               5);
}

}  // namespace tavira::bench
