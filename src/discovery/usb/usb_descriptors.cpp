#include "discovery/usb/usb_descriptors.h"

namespace tavira {
namespace {

using namespace usb_layout;

constexpr std::size_t kLengthSize = 2;
constexpr std::string_view kModelField = "MDL:";
constexpr std::size_t kModelLimit = 256;

// USB's own numbers.
constexpr std::uint8_t kFromDevice = 0x80;
constexpr std::uint8_t kGetDescriptor = 6;
constexpr std::uint8_t kStringDescriptor = 3;
constexpr std::size_t kDescriptorHead = 2;  // its length in bytes, and its kind

std::uint16_t Read16(ByteView bytes, std::size_t at) {
  return static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8);
}

std::uint32_t Read32(ByteView bytes, std::size_t at) {
  return Read16(bytes, at) | std::uint32_t{Read16(bytes, at + 2)} << 16;
}

/** What a string descriptor carries; nothing unless all of it came. */
ByteView StringContent(ByteView answer) {
  if (answer.size() < kDescriptor + kDescriptorHead) {
    return {};
  }
  const ByteView descriptor = answer.subspan(kDescriptor);
  const std::size_t length = descriptor[0];
  if (length < kDescriptorHead || length > descriptor.size() || descriptor[1] != kStringDescriptor) {
    return {};
  }
  return descriptor.subspan(kDescriptorHead, length - kDescriptorHead);
}

}  // namespace

std::string_view DeviceIdText(ByteView answer) {
  std::string_view text(reinterpret_cast<const char*>(answer.data()), answer.size());
  if (text.size() > kLengthSize) {
    text.remove_prefix(kLengthSize);
  }
  return text.substr(0, text.find('\0'));
}

std::string_view ModelOf(std::string_view device_id) {
  const std::size_t field = device_id.find(kModelField);
  if (field == std::string_view::npos) {
    return {};
  }
  const std::string_view rest = device_id.substr(field + kModelField.size());
  const std::size_t end = rest.find(';');
  return end == std::string_view::npos || end >= kModelLimit ? std::string_view() : rest.substr(0, end);
}

std::uint32_t PortCount(ByteView node_information) {
  const bool is_hub =
      node_information.size() > kNodePortCount && Read32(node_information, kNodeType) == kNodeTypeHub;
  return is_hub ? node_information[kNodePortCount] : 0;
}

std::optional<tagUsbIdentity> ReadIdentity(ByteView connection_information) {
  if (connection_information.size() < kDeviceDescriptor + kDeviceDescriptorSize) {
    return std::nullopt;
  }
  const ByteView device = connection_information.subspan(kDeviceDescriptor);
  return tagUsbIdentity{Read16(device, kVendor), Read16(device, kProduct), device[kProductString]};
}

void PutPort(std::span<std::uint8_t> request, std::uint32_t port) {
  for (std::size_t i = 0; i < 4; ++i) {
    request[kConnectionPort + i] = static_cast<std::uint8_t>(port >> 8 * i);
  }
}

StringRequest MakeStringRequest(std::uint32_t port, std::uint8_t string, std::uint16_t language) {
  StringRequest request{};
  PutPort(request, port);
  request[kSetup] = kFromDevice;
  request[kSetup + 1] = kGetDescriptor;
  request[kSetup + 2] = string;
  request[kSetup + 3] = kStringDescriptor;
  request[kSetup + 4] = static_cast<std::uint8_t>(language);
  request[kSetup + 5] = static_cast<std::uint8_t>(language >> 8);
  request[kSetup + 6] = static_cast<std::uint8_t>(request.size() - kDescriptor);
  return request;
}

std::optional<std::uint16_t> FirstLanguage(ByteView answer) {
  const ByteView languages = StringContent(answer);
  return languages.size() < 2 ? std::nullopt : std::optional(Read16(languages, 0));
}

WideString DescriptorText(ByteView answer) {
  const ByteView content = StringContent(answer);
  WideString text;
  for (std::size_t at = 0; at + 1 < content.size(); at += 2) {
    text.push_back(static_cast<TvmgrChar>(Read16(content, at)));
  }
  return text;
}

}  // namespace tavira
