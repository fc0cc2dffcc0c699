// The binding to SETUPAPI.DLL, against a stand-in beside this program.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>

#include "discovery/spooler_ports.h"
#include "discovery/usb/usb_enumeration.h"
#include "platform/platform.h"
#include "sandbox_key.h"

namespace tavira::test {
namespace {

constexpr const wchar_t* kLibrary = L"setupapi.dll";

class UsbTreeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(IsLoaded()) << "something else of this program uses it";
    ASSERT_NE(nullptr, Find<void()>("FakeSetupapiHide")) << "this is not the stand-in";
  }
  void TearDown() override { EXPECT_FALSE(IsLoaded()); }

  static bool IsLoaded() { return ::GetModuleHandleW(kLibrary) != nullptr; }

  /** Keeps the stand-in loaded, and so its state. */
  struct tagHold {
    tagHold() : module(::LoadLibraryW(kLibrary)) {}
    ~tagHold() { ::FreeLibrary(module); }
    HMODULE module;
  };

  template <typename Function>
  static Function* Find(const char* name) {
    const tagHold hold;
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(hold.module, name)));
  }

  std::vector<tagUsbRawEntry> Enumerate() {
    return CUsbEnumeration(*tree_, settings_, platform_->Text()).Enumerate();
  }

  std::unique_ptr<IUsbTree> tree_ = MakeUsbTree();
  std::unique_ptr<IPlatform> platform_ = MakePlatform();
  std::unique_ptr<IProfileFile> profile_ = MakeProfileFile();
  CModuleSettings settings_{*profile_};
};

TEST_F(UsbTreeTest, TheTreeIsReadAsTheSystemTellsIt) {
  const auto printers = tree_->FindInterfaces(EUsbInterface::kPrinter);
  ASSERT_NE(nullptr, printers);
  ASSERT_EQ(2U, printers->Count());
  EXPECT_EQ(L"USB\\VID_0B1C&PID_4100&MI_00\\6", printers->InstanceId(0));
  EXPECT_EQ(L"\\\\?\\usb#lx#mi_00", printers->DevicePath(0));
  EXPECT_EQ(L"", printers->InstanceId(1));
  EXPECT_EQ(L"", printers->DevicePath(2));
  const auto hubs = tree_->FindInterfaces(EUsbInterface::kHub);
  ASSERT_NE(nullptr, hubs);
  EXPECT_EQ(1U, hubs->Count());

  const auto function = tree_->Locate(printers->InstanceId(0));
  const auto device = tree_->Parent(function.value());
  const auto hub = tree_->Parent(device.value());
  EXPECT_EQ(L"usbprint", tree_->Service(function.value()));
  EXPECT_EQ(2U, tree_->Address(device.value()));
  EXPECT_EQ(L"USBHUB3", tree_->Service(hub.value()));
  EXPECT_EQ(hubs->InstanceId(0), tree_->InstanceId(hub.value()));
  const auto root = tree_->Parent(hub.value());
  EXPECT_EQ(L"", tree_->Service(root.value()));
  EXPECT_EQ(std::nullopt, tree_->Parent(root.value()));
  EXPECT_EQ(std::nullopt, tree_->Locate(L"USB\\NONE"));
}

TEST_F(UsbTreeTest, APrinterThatCannotBeOpenedIsListed) {
  const tagHold hold;
  const auto entries = Enumerate();
  ASSERT_EQ(1U, entries.size());
  EXPECT_EQ(L"USB\\VID_0B1C&PID_4100&MI_00\\6", entries[0].instance_id);
  EXPECT_EQ(L"\\\\?\\usb#lx#mi_00", entries[0].device_path);
  EXPECT_EQ(L"", entries[0].device_id + entries[0].model + entries[0].product_name);
  EXPECT_EQ(0, entries[0].vendor_number + entries[0].product_number);
  EXPECT_EQ(0, Find<int()>("FakeSetupapiOpenSets")());
}

TEST_F(UsbTreeTest, ADeviceThatRefusesARequestAnswersNothing) {
  const auto path = std::filesystem::temp_directory_path() /
                    ("tavira_no_device_" + std::to_string(::GetCurrentProcessId()));
  EXPECT_EQ(nullptr, tree_->OpenPrinterDevice(path.wstring()));
  EXPECT_EQ(nullptr, tree_->OpenHubDevice(path.wstring() + L"\x3042"));
  std::ofstream(path) << "a file, not a device";
  {
    const auto printer = tree_->OpenPrinterDevice(path.wstring());
    ASSERT_NE(nullptr, printer);
    std::uint8_t answer[512] = {};
    EXPECT_EQ(0U, printer->Ask(EUsbRequest::kPrinterDeviceId, {}, answer));
    const auto hub = tree_->OpenHubDevice(path.wstring());
    EXPECT_EQ(nullptr, hub) << "the printer is still open for reading";
  }
  EXPECT_NE(nullptr, tree_->OpenHubDevice(path.wstring()));
  std::filesystem::remove(path);
}

TEST_F(UsbTreeTest, TheLibraryStaysLoadedFromTheFirstUseToTheLast) {
  auto first = tree_->FindInterfaces(EUsbInterface::kPrinter);
  auto second = tree_->FindInterfaces(EUsbInterface::kHub);
  tree_->Locate(L"USB\\NONE");
  EXPECT_TRUE(IsLoaded());
  first.reset();
  EXPECT_TRUE(IsLoaded());
  EXPECT_EQ(1U, second->Count());
}

TEST_F(UsbTreeTest, WithoutAnyOneEntryPointNothingIsListed) {
  for (const char* name : {"SetupDiGetClassDevsW", "SetupDiEnumDeviceInfo", "SetupDiEnumDeviceInterfaces",
                           "SetupDiGetDeviceInterfaceDetailW", "SetupDiOpenDeviceInterfaceRegKey",
                           "SetupDiDestroyDeviceInfoList", "CM_Get_Device_IDW",
                           "CM_Get_DevNode_Registry_PropertyW", "CM_Get_Parent", "CM_Locate_DevNodeW"}) {
    const tagHold hold;
    ASSERT_EQ(1U, Enumerate().size());
    Find<void(const char*)>("FakeSetupapiHide")(name);
    ASSERT_EQ(nullptr, Find<void()>(name));
    EXPECT_TRUE(Enumerate().empty()) << name;
    EXPECT_EQ(0, Find<int()>("FakeSetupapiOpenSets")());
    tree_->Service(tree_->Parent(tree_->Locate(L"USB\\VID_0B1C&PID_4100\\9").value_or(20)).value_or(20));
    EXPECT_NO_FATAL_FAILURE(tree_->InstanceId(20));
  }
}

TEST_F(UsbTreeTest, ASpoolerPortIsMatchedByTheInterfacesParameters) {
  CSandboxKey sandbox;
  sandbox.SetNumber(L"40", L"Port Number", 7);
  sandbox.SetText(L"40", L"Base Name", L"USB");
  const auto machine = MakeLocalMachine();
  CSpoolerPorts ports(*machine, *tree_, settings_);
  tagFoundPrinter printer;
  ports.FillFromPort(L"USB007", printer);
  EXPECT_EQ(L"\\\\?\\usb#lx#mi_00", printer.text3);
  EXPECT_EQ(L"USB007", ports.FindPortName(printer));
  printer.text3 = L"\\\\?\\usb#gone";
  EXPECT_EQ(L"", ports.FindPortName(printer));
}

// Run by itself, with the library disabled.
TEST(MissingSetupapiTest, NothingIsListed) {
  ASSERT_EQ(nullptr, ::LoadLibraryW(kLibrary));
  const auto platform = MakePlatform();
  const auto profile = MakeProfileFile();
  const auto tree = MakeUsbTree();
  const CModuleSettings settings(*profile);
  EXPECT_TRUE(CUsbEnumeration(*tree, settings, platform->Text()).Enumerate().empty());
  EXPECT_EQ(std::nullopt, tree->Locate(L"HTREE\\ROOT\\0"));
}

}  // namespace
}  // namespace tavira::test
