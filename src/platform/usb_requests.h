#pragma once

#include <cstddef>
#include <cstdint>

namespace tavira {

/** The control codes by which USB printers and hubs are asked. */
enum class EUsbRequest : std::uint32_t {
  kPrinterDeviceId = 0x220034,
  kNodeInformation = 0x220408,
  kConnectionInformation = 0x22040C,
  kConnectionDescriptor = 0x220410,
};

/** Byte offsets in the drivers' records, which are packed; numbers in them are little-endian. */
namespace usb_layout {

// Node information of a hub.
constexpr std::size_t kNodeType = 0;
constexpr std::uint32_t kNodeTypeHub = 0;
constexpr std::size_t kNodePortCount = 6;

// Connection information: the port's number in front, in the question too; then the device descriptor.
constexpr std::size_t kConnectionPort = 0;
constexpr std::size_t kDeviceDescriptor = 4;
constexpr std::size_t kConnectionInformationSize = 35;
constexpr std::size_t kPipeSize = 11;

// Within a device descriptor.
constexpr std::size_t kVendor = 8;
constexpr std::size_t kProduct = 10;
constexpr std::size_t kProductString = 15;
constexpr std::size_t kDeviceDescriptorSize = 18;

// Descriptor request: the port's number, the eight bytes of a control transfer's setup, then the descriptor.
constexpr std::size_t kSetup = 4;
constexpr std::size_t kDescriptor = 12;

}  // namespace usb_layout
}  // namespace tavira
