#include "discovery/usb/usb_enumeration.h"

#include <gtest/gtest.h>

#include <functional>

#include "recorded_printer.h"
#include "unit/discovery/search/search_support.h"

namespace tavira::test {
namespace {

/** Behind two hubs; the nearer one counts. */
CRecordedUsbTree TwoHubsTree() {
  CRecordedUsbTree tree;
  tree.devices = {{"HTREE\\ROOT\\0", "", {}, 0},
                  {"USB\\ROOT_HUB30\\4&1A2B", "USBHUB3", 0, 0},
                  {"USB\\VID_05E3&PID_0608\\5&1", "USBHUB3", 2, 1},
                  {"USB\\VID_05E3&PID_0608\\6&2", "USBHUB3", 4, 2},
                  {kPrinterId, "usbprint", kPort, 3}};
  AddHub(tree, "USB\\VID_05E3&PID_0608\\6&2");
  AddPrinter(tree);
  return tree;
}

/**
 * Below a function of a composite device: the device itself has the port, what is below it numbers of its
 * own.
 */
CRecordedUsbTree CompositeTree() {
  CRecordedUsbTree tree;
  tree.devices = {{"HTREE\\ROOT\\0", "", {}, 0},
                  {"USB\\ROOT_HUB20\\4&2", "usbhub", 0, 0},
                  {"USB\\VID_0B1C&PID_4100\\9", "usbccgp", kPort, 1},
                  {"USB\\VID_0B1C&PID_4100&MI_00\\7", "usbcomp", 2, 2},
                  {kPrinterId, "usbprint", 1, 3}};
  AddHub(tree, "USB\\ROOT_HUB20\\4&2");
  AddPrinter(tree);
  return tree;
}

/** Below a hub with another driver. */
CRecordedUsbTree TreeWithService(const char* service) {
  CRecordedUsbTree tree = RootHubTree();
  tree.devices[2].service = service;
  return tree;
}

class UsbEnumerationTest : public ::testing::Test {
 protected:
  std::vector<tagUsbRawEntry> Enumerate(CRecordedUsbTree& tree) {
    return CUsbEnumeration(tree, settings_, text_).Enumerate();
  }

  /** The only entry; an empty one when there are none or several. */
  tagUsbRawEntry EnumerateOne(CRecordedUsbTree& tree) {
    const auto entries = Enumerate(tree);
    EXPECT_EQ(1U, entries.size());
    return entries.size() == 1 ? entries.front() : tagUsbRawEntry();
  }

  CMemoryProfile profile_;
  CModuleSettings settings_{profile_};
  CLatin1Codec text_;
};

const WideString kProductName = WidenAscii("LX ") + static_cast<TvmgrChar>(0x20AC);

TEST_F(UsbEnumerationTest, APrinterIsDescribedWhereverItIsPluggedIn) {
  CRecordedUsbTree with_most_pipes = RootHubTree();
  with_most_pipes.answers[kHubPath].connections[kPort].append(28 * usb_layout::kPipeSize, '\x07');
  for (CRecordedUsbTree tree : {RootHubTree(), TwoHubsTree(), CompositeTree(), with_most_pipes}) {
    SCOPED_TRACE(tree.devices[2].instance_id);
    const tagUsbRawEntry entry = EnumerateOne(tree);
    EXPECT_EQ(WidenAscii(kPrinterId), entry.instance_id);
    EXPECT_EQ(WidenAscii(kPrinterPath), entry.device_path);
    EXPECT_EQ(WidenAscii("LX-R4100"), entry.model);
    EXPECT_EQ(WidenAscii(kDeviceId), entry.device_id);
    EXPECT_EQ(kProductName, entry.product_name);
    EXPECT_EQ(0x0B1C, entry.vendor_number);
    EXPECT_EQ(0x4100, entry.product_number);
  }
}

// What cannot be read stays empty, and costs the printer nothing else. (Answers that are cut short: tests/damage.)
TEST_F(UsbEnumerationTest, WhatTheHubDoesNotTellStaysEmpty) {
  enum EExpect { kNothing, kNumbersOnly };
  struct tagCase {
    const char* name;
    EExpect expect;
    std::function<void(CRecordedUsbTree&, tagRecordedAnswers& hub)> change;
  };
  const auto node = [](const std::string& answer) {
    return [answer](auto&, auto& hub) { hub.node_information = answer; };
  };
  const auto text = [](int index, int language, const std::string& answer) {
    return [=](auto&, auto& hub) { hub.strings[{kPort, index, language}] = answer; };
  };
  const tagCase cases[] = {
      {"no hub above", kNothing, [](auto& tree, auto&) { tree.devices[2].service = "USBXHCI"; }},
      {"printer not in the tree", kNothing, [](auto& tree, auto&) { tree.devices[3].instance_id = "X"; }},
      {"a tree without end", kNothing,
       [](auto& tree, auto&) { tree.devices[2].service = "loop", tree.devices[1].parent = 2; }},
      {"no interface of the hub", kNothing, [](auto& tree, auto&) { tree.interfaces[1].instance_id = "X"; }},
      {"hub without a path", kNothing, [](auto& tree, auto&) { tree.interfaces[1].path.clear(); }},
      {"hub cannot be opened", kNothing, [](auto& tree, auto&) { tree.answers.erase(kHubPath); }},
      {"port not known", kNothing, [](auto& tree, auto&) { tree.devices[3].address.reset(); }},
      {"port 0", kNothing,
       [](auto& tree, auto& hub) {
         tree.devices[3].address = 0;
         hub.connections[0] = Connection(0);
       }},
      {"fewer ports than the printer's", kNothing, node(NodeInformation(kPort - 1))},
      {"no ports", kNothing, node(NodeInformation(0))},
      {"not a hub but a composite device", kNothing, node("\1" + NodeInformation(kPort).substr(1))},
      {"no node information", kNothing, node("")},
      {"no connection information", kNothing, [](auto&, auto& hub) { hub.connections.clear(); }},
      {"no languages", kNumbersOnly, text(0, 0, "")},
      {"empty list of languages", kNumbersOnly, text(0, 0, Descriptor({}))},
      {"half a language", kNumbersOnly, text(0, 0, std::string(12, '\0') + "\3\3\x09\x04")},
      {"no product string named", kNumbersOnly,
       [](auto&, auto& hub) {
         hub.connections[kPort][4 + 15] = 0;
         hub.strings[{kPort, 0, kEnglish}] = Descriptor({'X'});
       }},
      {"no product string", kNumbersOnly, text(3, kEnglish, "")},
      {"product string in another language", kNumbersOnly, text(0, 0, Descriptor({0x0411, kEnglish}))},
      {"product string shorter than its head", kNumbersOnly,
       text(3, kEnglish, std::string(12, '\0') + "\1\3LX")},
      {"another kind of descriptor", kNumbersOnly, text(3, kEnglish, std::string(12, '\0') + "\4\2LX")},
  };
  for (const tagCase& entry : cases) {
    SCOPED_TRACE(entry.name);
    CRecordedUsbTree tree = RootHubTree();
    entry.change(tree, tree.answers[kHubPath]);
    const tagUsbRawEntry found = EnumerateOne(tree);
    EXPECT_EQ(WidenAscii("LX-R4100"), found.model);
    EXPECT_EQ(entry.expect == kNothing ? 0 : 0x0B1C, found.vendor_number);
    EXPECT_EQ(entry.expect == kNothing ? 0 : 0x4100, found.product_number);
    EXPECT_EQ(WideString(), found.product_name);
    EXPECT_GT(100, tree.parents_asked);
  }
}

TEST_F(UsbEnumerationTest, AStringDescriptorEndsWhereItSays) {
  CRecordedUsbTree tree = RootHubTree();
  std::string& product = tree.answers[kHubPath].strings[{kPort, 3, kEnglish}];
  product[12] = 7;  // two characters and a half
  EXPECT_EQ(WidenAscii("LX"), EnumerateOne(tree).product_name);
  product = Descriptor({});
  product[12] = '\xFF';
  product.append(253, 'A');
  EXPECT_EQ(WideString(126, 0x4141), EnumerateOne(tree).product_name);
}

TEST_F(UsbEnumerationTest, TheModelIsTheClosedFieldOfTheDeviceId) {
  struct tagCase {
    std::string answer;
    std::string device_id;
    std::string model;
  };
  const auto id = [](const std::string& text, const std::string& model) {
    return tagCase{DeviceIdAnswer(text), text, model};
  };
  const std::string long_id = "MDL:LX;" + std::string(505, 'x');
  const tagCase cases[] = {
      id("MDL:LX-R4100;", "LX-R4100"),
      id("MFG:M;MDL:A;MDL:B;", "A"),
      id("MDL:;", ""),
      id("MDL:LX-R4100", ""),
      id("MFG:M;CLS:PRINTER;", ""),
      id("MDL:" + std::string(255, 'm') + ";", std::string(255, 'm')),
      id("MDL:" + std::string(256, 'm') + ";", ""),
      {DeviceIdAnswer(long_id), long_id.substr(0, 510), "LX"},
      {DeviceIdAnswer(std::string("MDL:LX;\0MDL:", 12)), "MDL:LX;", "LX"},
      {DeviceIdAnswer("M"), "M", ""},
      {"MD", "MD", ""},  // too short to have a length in front
      {std::string("\0\2", 2), "", ""},
      {"", "", ""},
  };
  for (const tagCase& entry : cases) {
    CRecordedUsbTree tree = RootHubTree();
    tree.answers[kPrinterPath].device_id = entry.answer;
    const tagUsbRawEntry found = EnumerateOne(tree);
    EXPECT_EQ(WidenAscii(entry.device_id), found.device_id);
    EXPECT_EQ(WidenAscii(entry.model), found.model) << entry.device_id;
    EXPECT_EQ(0x4100, found.product_number);
  }
}

TEST_F(UsbEnumerationTest, EveryInterfaceWithAnInstanceIsListed) {
  CRecordedUsbTree tree = RootHubTree();
  tree.interfaces.push_back({EUsbInterface::kPrinter, "", "\\\\?\\nameless"});
  tree.interfaces.push_back({EUsbInterface::kPrinter, "USB\\OFF\\1", ""});
  const auto entries = Enumerate(tree);
  ASSERT_EQ(2U, entries.size());
  EXPECT_EQ(0x4100, entries[0].product_number);
  EXPECT_EQ(WidenAscii("USB\\OFF\\1"), entries[1].instance_id);
  EXPECT_EQ(WideString(), entries[1].device_id);
  EXPECT_EQ(0, entries[1].product_number);
  tree.lists_devices = false;
  EXPECT_TRUE(Enumerate(tree).empty());
}

TEST_F(UsbEnumerationTest, AHubIsKnownByHowItsServiceNameBegins) {
  struct tagCase {
    const char* service;
    const char* user_name;
    bool is_hub;
  };
  const tagCase cases[] = {
      {"USBHUB3", "", true},    {"usbhubX", "", true},    {"nusb3hub", "", true},
      {"RUSB3HUB", "", true},   {"flxhcihub", "", true},  {"tihub3", "", true},
      {"EtronHub3", "", true},  {"VIAHub3", "", true},    {"asmthub3", "", true},
      {"iusb3hub", "", true},   {"usbhu", "", false},     {"xusbhub", "", false},
      {"", "", false},          {"ACMEH", "AcmeH", true}, {"acmehub_x64", "AcmeH", true},
      {"acme", "AcmeH", false}, {"acmehub", "", false},   {"usbhub3", "AcmeH", true},
  };
  for (const tagCase& entry : cases) {
    CRecordedUsbTree tree = TreeWithService(entry.service);
    profile_.values["Search/UserUSBHubName"] = entry.user_name;
    EXPECT_EQ(entry.is_hub ? 0x4100 : 0, EnumerateOne(tree).product_number)
        << entry.service << " with " << entry.user_name;
  }
}

}  // namespace
}  // namespace tavira::test
