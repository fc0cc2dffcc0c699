#include "discovery/usb/usb_enumeration.h"

#include <algorithm>
#include <array>

#include "discovery/usb/usb_descriptors.h"
#include "discovery/usb/usb_hub_walk.h"

namespace tavira {
namespace {

// Room for a device's usual pipes: some drivers refuse to leave any of them out.
constexpr std::size_t kMostPipes = 30;
constexpr std::size_t kConnectionSize =
    usb_layout::kConnectionInformationSize + kMostPipes * usb_layout::kPipeSize;
constexpr std::size_t kNodeInformationSize = 80;
constexpr std::size_t kDeviceIdSize = 512;

/** Asks with the buffer's content and answers the part of it that the device filled. */
ByteView AskInPlace(IUsbDevice& device, EUsbRequest request, std::span<std::uint8_t> buffer) {
  const std::size_t got = device.Ask(request, buffer, buffer);
  return buffer.first(std::min(got, buffer.size()));
}

bool HasPort(IUsbDevice& hub, std::uint32_t port) {
  std::array<std::uint8_t, kNodeInformationSize> buffer{};
  return port > 0 && port <= PortCount(AskInPlace(hub, EUsbRequest::kNodeInformation, buffer));
}

std::optional<tagUsbIdentity> AskIdentity(IUsbDevice& hub, std::uint32_t port) {
  std::array<std::uint8_t, kConnectionSize> buffer{};
  PutPort(buffer, port);
  return ReadIdentity(AskInPlace(hub, EUsbRequest::kConnectionInformation, buffer));
}

WideString AskProductName(IUsbDevice& hub, std::uint32_t port, std::uint8_t string) {
  StringRequest buffer = MakeStringRequest(port, 0, 0);
  const auto language = FirstLanguage(AskInPlace(hub, EUsbRequest::kConnectionDescriptor, buffer));
  if (!language || string == 0) {
    return {};
  }
  buffer = MakeStringRequest(port, string, *language);
  return DescriptorText(AskInPlace(hub, EUsbRequest::kConnectionDescriptor, buffer));
}

}  // namespace

std::vector<tagUsbRawEntry> CUsbEnumeration::Enumerate() {
  std::vector<tagUsbRawEntry> entries;
  const auto printers = tree_.FindInterfaces(EUsbInterface::kPrinter);
  const std::size_t count = printers ? printers->Count() : 0;
  for (std::size_t i = 0; i < count; ++i) {
    tagUsbRawEntry entry;
    entry.instance_id = printers->InstanceId(i);
    if (entry.instance_id.empty()) {
      continue;
    }
    entry.device_path = printers->DevicePath(i);
    ReadDeviceId(entry);
    ReadIdentityFromHub(entry);
    entries.push_back(std::move(entry));
  }
  return entries;
}

void CUsbEnumeration::ReadDeviceId(tagUsbRawEntry& entry) {
  const auto printer = tree_.OpenPrinterDevice(entry.device_path);
  if (!printer) {
    return;
  }
  std::array<std::uint8_t, kDeviceIdSize> buffer{};
  const std::size_t got = printer->Ask(EUsbRequest::kPrinterDeviceId, {}, buffer);
  const std::string_view device_id = DeviceIdText(ByteView(buffer).first(std::min(got, buffer.size())));
  entry.device_id = text_.FromAnsi(device_id);
  entry.model = text_.FromAnsi(ModelOf(device_id));
}

void CUsbEnumeration::ReadIdentityFromHub(tagUsbRawEntry& entry) {
  const auto place = FindHubPort(tree_, settings_, text_, entry.instance_id);
  if (!place) {
    return;
  }
  const WideString path = FindHubPath(place->hub_instance_id);
  const auto hub = path.empty() ? nullptr : tree_.OpenHubDevice(path);
  if (!hub || !HasPort(*hub, place->port)) {
    return;
  }
  if (const auto identity = AskIdentity(*hub, place->port)) {
    entry.vendor_number = identity->vendor;
    entry.product_number = identity->product;
    entry.product_name = AskProductName(*hub, place->port, identity->product_string);
  }
}

WideString CUsbEnumeration::FindHubPath(const WideString& instance_id) {
  const auto hubs = tree_.FindInterfaces(EUsbInterface::kHub);
  const std::size_t count = hubs ? hubs->Count() : 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (EqualsIgnoringCase(hubs->InstanceId(i), instance_id)) {
      return hubs->DevicePath(i);
    }
  }
  return {};
}

}  // namespace tavira
