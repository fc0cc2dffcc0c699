#include "computer/network.h"

// Before windows.h: it would bring the older one.
#include <winsock2.h>
#include <ws2tcpip.h>
// iphlpapi.h needs both before it.
#include <iphlpapi.h>

#include <cstddef>
#include <cstdio>

#include "output/text_encoding.h"

namespace tvmgr {
namespace {

/** A function of a library that is loaded when it is needed: most runs ask no question about the network. */
template <typename Function>
Function* SystemFunction(const wchar_t* library, const char* name) {
  const HMODULE module = LoadLibraryW(library);
  return module == nullptr
             ? nullptr
             : reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

std::string Dotted(const in_addr& address) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(&address);
  std::string text;
  for (int i = 0; i < 4; ++i) {
    text += (i == 0 ? "" : ".") + std::to_string(bytes[i]);
  }
  return text;
}

std::vector<std::string> UnicastAddresses(const IP_ADAPTER_UNICAST_ADDRESS* address) {
  std::vector<std::string> addresses;
  for (; address != nullptr; address = address->Next) {
    const auto* const inet = reinterpret_cast<const sockaddr_in*>(address->Address.lpSockaddr);
    addresses.push_back(Dotted(inet->sin_addr) + "/" + std::to_string(address->OnLinkPrefixLength));
  }
  return addresses;
}

}  // namespace

std::optional<std::vector<tagAdapter>> NetworkAdapters() {
  auto* const get = SystemFunction<decltype(GetAdaptersAddresses)>(L"IPHLPAPI.DLL", "GetAdaptersAddresses");
  constexpr ULONG kFlags = GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST | GAA_FLAG_SKIP_DNS_SERVER;
  ULONG size = 32'768;
  for (int attempt = 0; get != nullptr && attempt < 5; ++attempt) {
    std::vector<std::uint64_t> buffer(size / sizeof(std::uint64_t) + 1);
    auto* record = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data());
    const ULONG result = get(AF_INET, kFlags, nullptr, record, &size);
    if (result == ERROR_BUFFER_OVERFLOW) {
      continue;
    }
    std::vector<tagAdapter> adapters;
    if (result == ERROR_NO_DATA || result == ERROR_ADDRESS_NOT_ASSOCIATED) {
      return adapters;
    }
    if (result != ERROR_SUCCESS) {
      break;
    }
    for (; record != nullptr; record = record->Next) {
      if (record->OperStatus == IfOperStatusUp) {
        adapters.push_back(
            {record->IfIndex, record->FriendlyName == nullptr ? "" : ToUtf8(record->FriendlyName),
             UnicastAddresses(record->FirstUnicastAddress), record->IfType == IF_TYPE_SOFTWARE_LOOPBACK});
      }
    }
    return adapters;
  }
  return std::nullopt;
}

std::optional<std::uint32_t> AdapterTowards(const std::string& address) {
  auto* const best = SystemFunction<decltype(GetBestInterface)>(L"IPHLPAPI.DLL", "GetBestInterface");
  // The bytes as they go over the wire; 255.255.255.255 is one of them.
  unsigned parts[4] = {};
  char rest = 0;
  if (best == nullptr ||
      std::sscanf(address.c_str(), "%u.%u.%u.%u%c", &parts[0], &parts[1], &parts[2], &parts[3], &rest) != 4) {
    return std::nullopt;
  }
  const DWORD number = parts[0] | parts[1] << 8 | parts[2] << 16 | parts[3] << 24;
  DWORD index = 0;
  return best(number, &index) == NO_ERROR ? std::optional<std::uint32_t>(index) : std::nullopt;
}

std::vector<std::string> AddressesOf(const std::string& host) {
  auto* const start = SystemFunction<decltype(WSAStartup)>(L"WS2_32.DLL", "WSAStartup");
  auto* const look_up = SystemFunction<decltype(GetAddrInfoW)>(L"WS2_32.DLL", "GetAddrInfoW");
  auto* const release = SystemFunction<decltype(FreeAddrInfoW)>(L"WS2_32.DLL", "FreeAddrInfoW");
  std::vector<std::string> addresses;
  WSADATA data{};
  if (start == nullptr || look_up == nullptr || release == nullptr || start(MAKEWORD(2, 2), &data) != 0) {
    return addresses;
  }
  ADDRINFOW hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  ADDRINFOW* found = nullptr;
  if (look_up(ToWide(host).c_str(), nullptr, &hints, &found) == 0) {
    for (const ADDRINFOW* one = found; one != nullptr; one = one->ai_next) {
      addresses.push_back(Dotted(reinterpret_cast<const sockaddr_in*>(one->ai_addr)->sin_addr));
    }
    release(found);
  }
  return addresses;
}

}  // namespace tvmgr
