#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "platform/usb_requests.h"
#include "platform/wide_string.h"

// What USB printers and hubs answer. Every byte is foreign: an answer that is too short, or contradicts
// itself, reads as nothing. Each takes an answer cut to the bytes that came.

namespace tavira {

using ByteView = std::span<const std::uint8_t>;

/** The device ID's text, without the length in front of it and up to the first zero byte. */
std::string_view DeviceIdText(ByteView answer);

/** The text of the field "MDL:"; empty without a closing ";" and from 256 characters on. */
std::string_view ModelOf(std::string_view device_id);

/** The number of ports in a hub's node information; 0 when it is not that of a hub. */
std::uint32_t PortCount(ByteView node_information);

/** What a device says of itself. */
struct tagUsbIdentity {
  std::uint16_t vendor = 0;
  std::uint16_t product = 0;
  std::uint8_t product_string = 0; /**< index of the string descriptor; 0 when there is none */
};

/** The device descriptor in a port's connection information. */
std::optional<tagUsbIdentity> ReadIdentity(ByteView connection_information);

/** Puts the number of the port asked about in front of a request to a hub. */
void PutPort(std::span<std::uint8_t> request, std::uint32_t port);

/** A request for a string descriptor: what is sent, and room for the longest answer. */
using StringRequest = std::array<std::uint8_t, usb_layout::kDescriptor + 255>;

/** String 0 is the list of languages, asked for in language 0. */
StringRequest MakeStringRequest(std::uint32_t port, std::uint8_t string, std::uint16_t language);

/** The first language of string descriptor 0; `answer` begins with the request's own 12 bytes. */
std::optional<std::uint16_t> FirstLanguage(ByteView answer);

/** The text of a string descriptor; `answer` begins with the request's own 12 bytes. */
WideString DescriptorText(ByteView answer);

}  // namespace tavira
