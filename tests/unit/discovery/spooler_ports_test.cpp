#include "discovery/spooler_ports.h"

#include <gtest/gtest.h>

#include "discovery_fakes.h"

namespace tavira::test {
namespace {

tagMemoryKey UsbParameters(std::map<std::string, std::string> texts,
                           std::map<std::string, std::uint32_t> numbers) {
  return {"Device Parameters", std::move(texts), std::move(numbers)};
}

tagRecordedInterface UsbPrinter(std::string path, std::optional<tagMemoryKey> parameters) {
  return {EUsbInterface::kPrinter, "USB\\LX\\1", std::move(path), std::move(parameters)};
}

/** A machine with network ports, USB printers and installed printers. */
class SpoolerPortsTest : public ::testing::Test {
 protected:
  SpoolerPortsTest() {
    ports_ = {{"IP_192.0.2.7", {{"IPAddress", "192.0.2.7"}, {"HostName", "label-7"}}},
              {"Warehouse", {{"IPAddress", ""}, {"HostName", "Warehouse.example"}}},
              {"Broken"},
              {"IP_192.0.2.7_1", {{"HostName", "192.0.2.7"}}},
              {"Third", {{"IPAddress", "192.0.2.7"}}}};
    usb_.interfaces = {
        UsbPrinter("\\\\?\\usb#one", UsbParameters({{"Base Name", "USB"}}, {{"Port Number", 1}})),
        UsbPrinter("\\\\?\\usb#none", std::nullopt),
        UsbPrinter("\\\\?\\usb#unnumbered", UsbParameters({{"Base Name", "USB"}}, {})),
        UsbPrinter("\\\\?\\usb#twelve", UsbParameters({}, {{"Port Number", 12}})),
        UsbPrinter("\\\\?\\usb#dot4", UsbParameters({{"Base Name", "DOT4_"}}, {{"Port Number", 1}})),
        UsbPrinter("\\\\?\\usb#many", UsbParameters({}, {{"Port Number", 1234}}))};
  }

  void Install(const std::string& name, const std::string& port, const std::string& driver) {
    installed_.push_back({name, {{"Port", port}, {"Printer Driver", driver}}});
  }

  tagMemoryKey Machine() const {
    const tagMemoryKey monitors = Key("Monitors", {Key("Standard TCP/IP Port", {Key("Ports", ports_)})});
    const tagMemoryKey print = Key("Print", {monitors, Key("Printers", installed_)});
    return Key("", {Key("SYSTEM", {Key("CurrentControlSet", {Key("Control", {print})})})});
  }

  std::pair<WideString, WideString> Fill(std::string_view port_name) { return Fill(port_name, Machine()); }
  std::pair<WideString, WideString> Fill(std::string_view port_name, const tagMemoryKey& root) {
    CMemoryRegistryKey machine(root);
    tagFoundPrinter printer;
    CSpoolerPorts(machine, usb_, settings_).FillFromPort(WidenAscii(port_name), printer);
    return {printer.text3, printer.text5};
  }

  WideString Find(std::string_view device_path, std::string_view address) {
    return Find(device_path, address, Machine());
  }
  WideString Find(std::string_view device_path, std::string_view address, const tagMemoryKey& root) {
    CMemoryRegistryKey machine(root);
    tagFoundPrinter printer;
    printer.text3 = WidenAscii(device_path);
    printer.text5 = WidenAscii(address);
    return CSpoolerPorts(machine, usb_, settings_).FindPortName(printer);
  }

  std::vector<tagMemoryKey> ports_;
  std::vector<tagMemoryKey> installed_;
  CRecordedUsbTree usb_;
  CMemoryProfile profile_;
  CModuleSettings settings_{profile_};
};

TEST_F(SpoolerPortsTest, APortNameGivesThePathOrAddressBehindIt) {
  struct tagCase {
    const char* port_name;
    const char* device_path;
    const char* address;
  };
  const tagCase cases[] = {{"IP_192.0.2.7", "", "192.0.2.7"},
                           {"Warehouse", "", "Warehouse.example"},
                           {"Broken", "", ""},
                           {"USB001", "\\\\?\\usb#one", ""},
                           {"usb012", "\\\\?\\usb#twelve", ""},
                           {"DOT4_001", "\\\\?\\usb#dot4", ""},
                           {"USB1234", "\\\\?\\usb#many", ""},
                           {"USB1", "", ""},
                           {"USB002", "", ""},
                           {"LPT1:", "", ""},
                           {"", "", ""}};
  for (const tagCase& entry : cases) {
    const auto [device_path, address] = Fill(entry.port_name);
    EXPECT_EQ(WidenAscii(entry.device_path), device_path) << entry.port_name;
    EXPECT_EQ(WidenAscii(entry.address), address) << entry.port_name;
  }
}

TEST_F(SpoolerPortsTest, ARecordGivesThePortOfItsAddressOrPath) {
  EXPECT_EQ(WidenAscii("Warehouse"), Find("", "WAREHOUSE.EXAMPLE"));
  EXPECT_EQ(WidenAscii("IP_192.0.2.7"), Find("", "LABEL-7"));
  EXPECT_EQ(WidenAscii("USB001"), Find("\\\\?\\USB#ONE", ""));
  EXPECT_EQ(WidenAscii("USB012"), Find("\\\\?\\usb#twelve", "198.51.100.1"));
  EXPECT_EQ(WidenAscii("Warehouse"), Find("\\\\?\\usb#one", "warehouse.example"));
  for (const char* path : {"\\\\?\\usb#none", "\\\\?\\usb#unnumbered", "\\\\?\\usb#gone", ""}) {
    EXPECT_EQ(WideString(), Find(path, "198.51.100.1")) << path;
  }
}

TEST_F(SpoolerPortsTest, OfSeveralPortsTheOneOfTheFirstSupportedPrinterIsTaken) {
  const auto find = [this] { return Find("", "192.0.2.7"); };
  EXPECT_EQ(WidenAscii("IP_192.0.2.7"), find());
  Install("Dispatch", "Third", "LX driver");
  EXPECT_EQ(WidenAscii("Third"), find());  // the only one with a printer
  Install("Office", "IP_192.0.2.7", "Other driver");
  Install("Spare", "Third", "Other driver");
  Install("Pool", "Warehouse,IP_192.0.2.7_1", "LX driver 2");
  EXPECT_EQ(WidenAscii("IP_192.0.2.7"), find());
  profile_.values["SupportDriver/7"] = "lx DRIVER";
  EXPECT_EQ(WidenAscii("Third"), find());
  profile_.values["SupportDriver/3"] = "LX driver 2";
  EXPECT_EQ(WidenAscii("IP_192.0.2.7_1"), find());
  profile_.values["SupportPrinter/19"] = "office";
  EXPECT_EQ(WidenAscii("IP_192.0.2.7"), find());
  profile_.values["SupportPrinter/18"] = "Dispatch";
  EXPECT_EQ(WidenAscii("Third"), find());
  profile_.module_path.clear();  // no Setting.ini: no preference
  EXPECT_EQ(WidenAscii("IP_192.0.2.7"), find());
}

TEST_F(SpoolerPortsTest, WithoutASpoolerNothingIsFound) {
  usb_.lists_devices = false;
  for (const char* port_name : {"USB001", "IP_192.0.2.7"}) {
    EXPECT_EQ(std::pair(WideString(), WideString()), Fill(port_name, {}));
  }
  EXPECT_EQ(WideString(), Find("\\\\?\\usb#one", "192.0.2.7", {}));
}

}  // namespace
}  // namespace tavira::test
