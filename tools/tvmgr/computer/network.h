#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tvmgr {

// What this computer says of its IPv4 network. Texts are UTF-8.

/** A network card, real or not, that is up. */
struct tagAdapter {
  std::uint32_t index = 0; /**< of Windows */
  std::string name;
  std::vector<std::string> addresses; /**< "192.0.2.7/24" */
  bool is_loopback = false;
};

/** None when Windows does not tell. */
std::optional<std::vector<tagAdapter>> NetworkAdapters();

/** The adapter by which datagrams to a dotted address leave; none: Windows knows no way there. */
std::optional<std::uint32_t> AdapterTowards(const std::string& address);

/** The dotted addresses of a host name or address; takes as long as the system lets it. Empty: it is not known. */
std::vector<std::string> AddressesOf(const std::string& host);

}  // namespace tvmgr
