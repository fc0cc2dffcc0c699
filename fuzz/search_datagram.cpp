#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "discovery/search/search_protocol.h"

namespace {

void Require(bool condition) {
  if (!condition) {
    std::abort();
  }
}

bool Holds(std::string_view datagram, std::string_view part) {
  return part.empty() ||
         (part.data() >= datagram.data() && part.data() + part.size() <= datagram.data() + datagram.size());
}

}  // namespace

// Whatever comes, nothing is taken that is too short for what it claims, and names lie within the datagram.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tavira;
  const std::string_view datagram(reinterpret_cast<const char*>(data), size);
  Require(!IsAnnouncement(datagram) || (size >= 76 && datagram.starts_with("KORVAp")));
  for (const std::uint32_t command : {kSearchState, kSearchNames, 0x02000001U, 16U, 0x8A1000U}) {
    const bool any = IsGoodAnswer(datagram, command, std::nullopt);
    const bool from_target = IsGoodAnswer(datagram, command, MacAddress{1, 2, 3, 4, 5, 6});
    Require(!any || (size >= 12 && datagram.starts_with("KORVAq")));
    Require(!from_target || any || command == 16 || command == 0x8A1000);
  }
  const tagPrinterNames names = ReadPrinterNames(datagram);
  Require(Holds(datagram, names.first) && Holds(datagram, names.second));
  Require(names.first.size() + names.second.size() <= 493);
  Require(names.first.find('\0') == std::string_view::npos &&
          names.second.find('\0') == std::string_view::npos);
  ParseMac(datagram);
  return 0;
}
