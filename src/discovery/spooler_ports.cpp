#include "discovery/spooler_ports.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

namespace tavira {
namespace {

constexpr std::string_view kTcpPorts =
    R"(SYSTEM\CurrentControlSet\Control\Print\Monitors\Standard TCP/IP Port\Ports)";
constexpr std::string_view kInstalledPrinters = R"(SYSTEM\CurrentControlSet\Control\Print\Printers)";

// Of ports without a printer, and of those whose printers Setting.ini does not name.
constexpr std::size_t kNoRank = std::numeric_limits<std::size_t>::max();
constexpr std::size_t kLastRank = kNoRank - 1;

/** The name of the USB port of a printer interface: "USB" and a number of at least three digits. */
WideString UsbPortName(IUsbInterfaceSet& interfaces, std::size_t index) {
  const auto parameters = interfaces.OpenParameters(index);
  const auto number = parameters ? parameters->ReadNumber(WidenAscii("Port Number")) : std::nullopt;
  if (!number) {
    return {};
  }
  WideString name = parameters->ReadText(WidenAscii("Base Name"));
  if (name.empty()) {
    name = WidenAscii("USB");
  }
  std::string digits = std::to_string(*number);
  digits.insert(0, digits.size() < 3 ? 3 - digits.size() : 0, '0');
  return name + WidenAscii(digits);
}

std::size_t PlaceIn(const std::vector<WideString>& list, WideView name) {
  const auto found = std::find_if(list.begin(), list.end(),
                                  [name](const auto& entry) { return EqualsIgnoringCase(entry, name); });
  return static_cast<std::size_t>(found - list.begin());
}

/** 0 for the first supported printer, and on through the supported drivers; kLastRank for all others. */
std::size_t RankOf(const tagSupportedNames& supported, WideView printer, WideView driver) {
  const std::size_t place = PlaceIn(supported.printers, printer);
  if (place < supported.printers.size()) {
    return place;
  }
  const std::size_t driver_place = PlaceIn(supported.drivers, driver);
  return driver_place < supported.drivers.size() ? supported.printers.size() + driver_place : kLastRank;
}

/**
 * Calls `action` for each port of an installed printer: several, with commas between, share a pool's work.
 */
template <typename Action>
void ForEachPort(WideView ports, Action action) {
  while (!ports.empty()) {
    const std::size_t comma = ports.find(',');
    action(ports.substr(0, comma));
    ports.remove_prefix(comma == WideView::npos ? ports.size() : comma + 1);
  }
}

}  // namespace

void CSpoolerPorts::FillFromPort(WideView port_name, tagFoundPrinter& printer) {
  if (port_name.empty()) {
    return;
  }
  const auto tcp_ports = local_machine_.Open(WidenAscii(kTcpPorts));
  if (const auto port = tcp_ports ? tcp_ports->Open(WideString(port_name)) : nullptr) {
    WideString address = port->ReadText(WidenAscii("IPAddress"));
    if (address.empty()) {
      address = port->ReadText(WidenAscii("HostName"));
    }
    if (!address.empty()) {
      printer.text5 = std::move(address);
      return;
    }
  }
  const auto interfaces = usb_.FindInterfaces(EUsbInterface::kPrinter);
  const std::size_t count = interfaces ? interfaces->Count() : 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (EqualsIgnoringCase(UsbPortName(*interfaces, i), port_name)) {
      printer.text3 = interfaces->DevicePath(i);
      return;
    }
  }
}

WideString CSpoolerPorts::FindPortName(const tagFoundPrinter& printer) {
  std::vector<WideString> ports;
  if (!printer.text5.empty()) {
    ports = TcpPortsOf(printer.text5);
  }
  if (ports.empty() && !printer.text3.empty()) {
    ports = UsbPortsOf(printer.text3);
  }
  return ports.size() > 1 ? Preferred(std::move(ports)) : ports.empty() ? WideString() : ports.front();
}

std::vector<WideString> CSpoolerPorts::TcpPortsOf(WideView address) {
  std::vector<WideString> ports;
  const auto key = local_machine_.Open(WidenAscii(kTcpPorts));
  if (!key) {
    return ports;
  }
  for (WideString& name : key->SubkeyNames()) {
    const auto port = key->Open(name);
    if (port && (EqualsIgnoringCase(port->ReadText(WidenAscii("IPAddress")), address) ||
                 EqualsIgnoringCase(port->ReadText(WidenAscii("HostName")), address))) {
      ports.push_back(std::move(name));
    }
  }
  return ports;
}

std::vector<WideString> CSpoolerPorts::UsbPortsOf(WideView device_path) {
  std::vector<WideString> ports;
  const auto interfaces = usb_.FindInterfaces(EUsbInterface::kPrinter);
  const std::size_t count = interfaces ? interfaces->Count() : 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (EqualsIgnoringCase(interfaces->DevicePath(i), device_path)) {
      WideString name = UsbPortName(*interfaces, i);
      if (!name.empty()) {
        ports.push_back(std::move(name));
      }
    }
  }
  return ports;
}

WideString CSpoolerPorts::Preferred(std::vector<WideString> ports) {
  tagSupportedNames supported;
  settings_.ReadSupportedNames(supported);
  std::vector<std::size_t> ranks(ports.size(), kNoRank);
  if (const auto printers = local_machine_.Open(WidenAscii(kInstalledPrinters))) {
    for (const WideString& name : printers->SubkeyNames()) {
      const auto printer = printers->Open(name);
      if (!printer) {
        continue;
      }
      const std::size_t rank = RankOf(supported, name, printer->ReadText(WidenAscii("Printer Driver")));
      ForEachPort(printer->ReadText(WidenAscii("Port")), [&](WideView port) {
        const std::size_t place = PlaceIn(ports, port);
        if (place < ports.size()) {
          ranks[place] = std::min(ranks[place], rank);
        }
      });
    }
  }
  const auto first = std::min_element(ranks.begin(), ranks.end());
  return std::move(ports[static_cast<std::size_t>(first - ranks.begin())]);
}

}  // namespace tavira
