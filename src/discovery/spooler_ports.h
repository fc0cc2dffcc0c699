#pragma once

#include <vector>

#include "discovery/module_settings.h"
#include "discovery/spooler_lookup.h"
#include "platform/registry.h"
#include "platform/usb_tree.h"

namespace tavira {

/** The spooler's standard TCP/IP ports and USB ports, as the registry keeps them. */
class CSpoolerPorts final : public ISpoolerLookup {
 public:
  CSpoolerPorts(IRegistryKey& local_machine, IUsbTree& usb, const CModuleSettings& settings)
      : local_machine_(local_machine), usb_(usb), settings_(settings) {}

  void FillFromPort(WideView port_name, tagFoundPrinter& printer) override;

  /**
   * When several ports lead to the printer, the one with an installed printer that Setting.ini names first; when it
   * names none, the first one with an installed printer.
   */
  WideString FindPortName(const tagFoundPrinter& printer) override;

 private:
  std::vector<WideString> TcpPortsOf(WideView address);
  std::vector<WideString> UsbPortsOf(WideView device_path);
  WideString Preferred(std::vector<WideString> ports);

  IRegistryKey& local_machine_;
  IUsbTree& usb_;
  const CModuleSettings& settings_;
};

}  // namespace tavira
