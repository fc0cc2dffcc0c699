#include "platform/usb_tree.h"

namespace tavira {
namespace {

/** The port library opens printers by Windows device paths; there are none of these here. */
class CNoUsbTree final : public IUsbTree {
 public:
  std::unique_ptr<IUsbInterfaceSet> FindInterfaces(EUsbInterface) override { return nullptr; }
  std::optional<DeviceNode> Locate(const WideString&) override { return std::nullopt; }
  std::optional<DeviceNode> Parent(DeviceNode) override { return std::nullopt; }
  WideString InstanceId(DeviceNode) override { return {}; }
  WideString Service(DeviceNode) override { return {}; }
  std::optional<std::uint32_t> Address(DeviceNode) override { return std::nullopt; }
  std::unique_ptr<IUsbDevice> OpenPrinterDevice(const WideString&) override { return nullptr; }
  std::unique_ptr<IUsbDevice> OpenHubDevice(const WideString&) override { return nullptr; }
};

}  // namespace

std::unique_ptr<IUsbTree> MakeUsbTree() {
  return std::make_unique<CNoUsbTree>();
}

}  // namespace tavira
