#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavira {

/** The printers' UDP port for searches. */
inline constexpr std::uint16_t kSearchPort = 3289;

/** Bytes that a host has room for: an announcement, and the answer to a request. */
inline constexpr std::size_t kMaxAnnouncement = 1024;
inline constexpr std::size_t kMaxSearchAnswer = 4096;

/** Search commands. */
inline constexpr std::uint32_t kSearchState = 0;
inline constexpr std::uint32_t kSearchNames = 0x02000000;
/** Set in a command that is meant for the one printer with the target address. */
inline constexpr std::uint32_t kSearchTargeted = 0x80000000;

using MacAddress = std::array<std::uint8_t, 6>;

/** Reads 12 hexadecimal digits; none for any other text. */
std::optional<MacAddress> ParseMac(std::string_view text);

/** The datagram that asks all printers to announce themselves. */
std::string BuildBroadcast();

/** The datagram of a command: 14 bytes, 20 with the target's address. */
std::string BuildSearchRequest(std::uint32_t command, const MacAddress& target);

/** True for a printer's announcement that offers what the search needs. Any bytes are safe. */
bool IsAnnouncement(std::string_view datagram);

/**
 * True when the datagram is an answer to the command and reports success; `target` is the printer that it
 * must come from, where the command says so. Any bytes are safe.
 */
bool IsGoodAnswer(std::string_view datagram, std::uint32_t command, const std::optional<MacAddress>& target);

/** The two names of a printer, in the ANSI code page. */
struct tagPrinterNames {
  std::string_view first;
  std::string_view second;
};

/** The names in a good answer to kSearchNames, as far as the datagram holds them. */
tagPrinterNames ReadPrinterNames(std::string_view datagram);

}  // namespace tavira
