#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "platform/registry.h"
#include "platform/usb_requests.h"
#include "platform/wide_string.h"

namespace tavira {

/** The system's number for a device in its tree; good as long as the device stays plugged in. */
using DeviceNode = std::uint32_t;

enum class EUsbInterface { kPrinter, kHub };

/** The interfaces of one class that were present when the set was made. Indices run from 0 below Count. */
class IUsbInterfaceSet {
 public:
  virtual ~IUsbInterfaceSet() = default;

  virtual std::size_t Count() = 0;

  /** The instance identifier of the device that has the interface; empty when it cannot be read. */
  virtual WideString InstanceId(std::size_t index) = 0;

  /** The path by which the interface is opened; empty when it cannot be read. */
  virtual WideString DevicePath(std::size_t index) = 0;

  /** The interface's device parameters in the registry; null when it has none. */
  virtual std::unique_ptr<IRegistryKey> OpenParameters(std::size_t index) = 0;
};

/** An open printer or hub; closed at the end of its life. */
class IUsbDevice {
 public:
  virtual ~IUsbDevice() = default;

  /** One request to the driver: the number of bytes that it wrote into `answer`, 0 when it refused. */
  virtual std::size_t Ask(EUsbRequest request, std::span<const std::uint8_t> question,
                          std::span<std::uint8_t> answer) = 0;
};

/** The devices of this machine, as far as finding USB printers needs them. May be used by several threads. */
class IUsbTree {
 public:
  virtual ~IUsbTree() = default;

  /** Null when the system cannot list devices. */
  virtual std::unique_ptr<IUsbInterfaceSet> FindInterfaces(EUsbInterface kind) = 0;

  virtual std::optional<DeviceNode> Locate(const WideString& instance_id) = 0;
  virtual std::optional<DeviceNode> Parent(DeviceNode node) = 0;
  virtual WideString InstanceId(DeviceNode node) = 0;

  /** The name of the driver's service; empty when there is none. */
  virtual WideString Service(DeviceNode node) = 0;

  /** The address that the bus gave the device: below a hub, the port it is plugged into, from 1. */
  virtual std::optional<std::uint32_t> Address(DeviceNode node) = 0;

  /** Null when it cannot be opened. */
  virtual std::unique_ptr<IUsbDevice> OpenPrinterDevice(const WideString& device_path) = 0;
  virtual std::unique_ptr<IUsbDevice> OpenHubDevice(const WideString& device_path) = 0;
};

/** The devices of the platform this program was built for. */
std::unique_ptr<IUsbTree> MakeUsbTree();

}  // namespace tavira
