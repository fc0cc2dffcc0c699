#pragma once

#include <initializer_list>
#include <string>

#include "unit/discovery/discovery_fakes.h"

namespace tavira::test {

inline constexpr const char* kPrinterId = "USB\\VID_0B1C&PID_4100\\000123";
inline constexpr const char* kPrinterPath = "\\\\?\\usb#vid_0b1c&pid_4100#000123#{28d78fad}";
inline constexpr const char* kHubPath = "\\\\?\\usb#root_hub30#4&1a2b#{f18a0e88}";
inline constexpr const char* kDeviceId = "MFG:Tavira;CMD:LX;MDL:LX-R4100;CLS:PRINTER;";
inline constexpr std::uint32_t kPort = 3;
inline constexpr int kEnglish = 0x0409;

/** What a hub with `ports` ports answers: its kind, then the hub descriptor, then how it is powered. */
inline std::string NodeInformation(int ports) {
  std::string answer(76, '\0');
  answer[4] = 9;
  answer[5] = 0x29;
  answer[6] = static_cast<char>(ports);
  return answer;
}

/** A port's connection information, with an open pair of pipes. */
inline std::string Connection(std::uint32_t port) {
  const char device[] =
      "\x12\x01\x00\x02\x00\x00\x00\x40"  // 18 bytes, device, USB 2.0, 64-byte packets
      "\x1C\x0B\x00\x41\x00\x01\x01\x03"  // 0B1C, 4100, release 1.0, maker in string 1, product in string 3
      "\x02\x01";                         // serial number in string 2, one configuration
  std::string answer(1, static_cast<char>(port));
  answer.append(3, '\0').append(device, 18);
  answer.append("\x01\x00\x00\x05\x00\x02\x00\x00\x00\x01\x00\x00\x00", 13);
  return answer.append(22, '\x07');
}

/** A string descriptor behind the 12 bytes of its request. */
inline std::string Descriptor(std::initializer_list<int> characters) {
  std::string answer(12, '\0');
  answer.push_back(static_cast<char>(2 + 2 * characters.size()));
  answer.push_back('\x03');
  for (const int character : characters) {
    answer.push_back(static_cast<char>(character & 0xFF));
    answer.push_back(static_cast<char>(character >> 8));
  }
  return answer;
}

/** A length in front, as printers send it. */
inline std::string DeviceIdAnswer(std::string_view text) {
  const std::size_t length = text.size() + 2;
  std::string answer{static_cast<char>(length >> 8), static_cast<char>(length & 0xFF)};
  return answer.append(text);
}

/** A hub's interface, and what the hub says of the printer's port. */
inline void AddHub(CRecordedUsbTree& tree, const char* instance_id) {
  tree.interfaces.push_back({EUsbInterface::kHub, "USB\\ROOT_HUB\\OTHER", "\\\\?\\other"});
  tree.interfaces.push_back({EUsbInterface::kHub, instance_id, kHubPath});
  tagRecordedAnswers& hub = tree.answers[kHubPath];
  hub.node_information = NodeInformation(kPort);
  hub.connections[kPort] = Connection(kPort);
  hub.strings[{kPort, 0, 0}] = Descriptor({kEnglish, 0x0411});
  hub.strings[{kPort, 3, kEnglish}] = Descriptor({'L', 'X', ' ', 0x20AC});
}

inline void AddPrinter(CRecordedUsbTree& tree) {
  tree.interfaces.push_back({EUsbInterface::kPrinter, kPrinterId, kPrinterPath});
  tree.answers[kPrinterPath].device_id = DeviceIdAnswer(kDeviceId);
}

/** The printer on port 3 of the root hub. */
inline CRecordedUsbTree RootHubTree() {
  CRecordedUsbTree tree;
  tree.devices = {{"HTREE\\ROOT\\0", "", {}, 0},
                  {"PCI\\VEN_8086\\3&11", "USBXHCI", 0x140000, 0},
                  {"USB\\ROOT_HUB30\\4&1A2B", "USBHUB3", 0, 1},
                  {kPrinterId, "usbprint", kPort, 2}};
  AddHub(tree, "usb\\root_hub30\\4&1a2b");
  AddPrinter(tree);
  return tree;
}

}  // namespace tavira::test
