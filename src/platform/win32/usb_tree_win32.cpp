#include "platform/usb_tree.h"

#include <array>
#include <cwchar>
#include <vector>

#include "platform/win32/registry_key_win32.h"
#include "platform/win32/setupapi_library.h"
#include "platform/win32/usb_device_win32.h"

namespace tavira {
namespace {

constexpr GUID kPrinterInterface{
    0x28D78FAD, 0x5A12, 0x11D1, {0xAE, 0x5B, 0x00, 0x00, 0xF8, 0x03, 0xA8, 0xC2}};
constexpr GUID kHubInterface{0xF18A0E88, 0xC30C, 0x11D0, {0x88, 0x15, 0x00, 0xA0, 0xC9, 0x06, 0xBE, 0xD8}};

/** Room for an instance identifier or a service name, with the terminator. */
constexpr ULONG kNameSize = 260;

static_assert(sizeof(SP_DEVINFO_DATA) == 32);
static_assert(sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W) == 8);

WideString InstanceIdOf(const STAutoLoanUnloadSetupapiDLL& api, DEVINST node) {
  std::array<wchar_t, kNameSize + 1> id{};  // one more: terminated also when the system fills all of it
  const CONFIGRET result = api.Call<decltype(::CM_Get_Device_IDW), CONFIGRET>("CM_Get_Device_IDW", CR_FAILURE,
                                                                              node, id.data(), kNameSize, 0U);
  return result == CR_SUCCESS ? WideString(id.data()) : WideString();
}

class CWin32UsbInterfaceSet final : public IUsbInterfaceSet {
 public:
  explicit CWin32UsbInterfaceSet(const GUID& interface_class) : class_(interface_class) {
    if (api_.IsUsable()) {
      set_ = api_.Call<decltype(::SetupDiGetClassDevsW), HDEVINFO>(
          "SetupDiGetClassDevsW", INVALID_HANDLE_VALUE, &class_, nullptr, nullptr,
          static_cast<DWORD>(DIGCF_PRESENT | DIGCF_DEVICEINTERFACE));
    }
  }
  ~CWin32UsbInterfaceSet() override {
    if (IsValid()) {
      api_.Call<decltype(::SetupDiDestroyDeviceInfoList), BOOL>("SetupDiDestroyDeviceInfoList", FALSE, set_);
    }
  }
  CWin32UsbInterfaceSet(const CWin32UsbInterfaceSet&) = delete;
  CWin32UsbInterfaceSet& operator=(const CWin32UsbInterfaceSet&) = delete;

  bool IsValid() const { return set_ != INVALID_HANDLE_VALUE; }

  std::size_t Count() override {
    DWORD count = 0;
    SP_DEVICE_INTERFACE_DATA data{};
    while (FindInterface(nullptr, count, data)) {
      ++count;
    }
    return count;
  }

  WideString InstanceId(std::size_t index) override {
    SP_DEVINFO_DATA device{};
    return FindDevice(index, device) ? InstanceIdOf(api_, device.DevInst) : WideString();
  }

  WideString DevicePath(std::size_t index) override {
    SP_DEVINFO_DATA device{};
    SP_DEVICE_INTERFACE_DATA data{};
    return FindDevice(index, device) && FindInterface(&device, 0, data) ? PathOf(data) : WideString();
  }

  std::unique_ptr<IRegistryKey> OpenParameters(std::size_t index) override {
    SP_DEVINFO_DATA device{};
    SP_DEVICE_INTERFACE_DATA data{};
    if (!FindDevice(index, device) || !FindInterface(&device, 0, data)) {
      return nullptr;
    }
    const auto no_key = static_cast<HKEY>(INVALID_HANDLE_VALUE);
    const HKEY key = api_.Call<decltype(::SetupDiOpenDeviceInterfaceRegKey), HKEY>(
        "SetupDiOpenDeviceInterfaceRegKey", no_key, set_, &data, 0U, static_cast<REGSAM>(KEY_READ));
    return key == no_key ? nullptr : MakeRegistryKey(RegistryKeyHandle(key));
  }

 private:
  bool FindDevice(std::size_t index, SP_DEVINFO_DATA& device) const {
    device.cbSize = sizeof(device);
    return api_.Call<decltype(::SetupDiEnumDeviceInfo), BOOL>("SetupDiEnumDeviceInfo", FALSE, set_,
                                                              static_cast<DWORD>(index), &device) != FALSE;
  }

  /** Of one device, or of the whole set when `device` is null. */
  bool FindInterface(SP_DEVINFO_DATA* device, DWORD index, SP_DEVICE_INTERFACE_DATA& data) const {
    data.cbSize = sizeof(data);
    return api_.Call<decltype(::SetupDiEnumDeviceInterfaces), BOOL>(
               "SetupDiEnumDeviceInterfaces", FALSE, set_, device, &class_, index, &data) != FALSE;
  }

  BOOL GetDetail(SP_DEVICE_INTERFACE_DATA& data, SP_DEVICE_INTERFACE_DETAIL_DATA_W* detail, DWORD size,
                 DWORD& required) const {
    return api_.Call<decltype(::SetupDiGetDeviceInterfaceDetailW), BOOL>(
        "SetupDiGetDeviceInterfaceDetailW", FALSE, set_, &data, detail, size, &required, nullptr);
  }

  WideString PathOf(SP_DEVICE_INTERFACE_DATA& data) const {
    constexpr std::size_t kHead = offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_W, DevicePath);
    DWORD size = 0;
    GetDetail(data, nullptr, 0, size);
    if (size < sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W)) {
      return {};
    }
    std::vector<DWORD> buffer(size / sizeof(DWORD) + 1);
    auto* detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(buffer.data());
    detail->cbSize = sizeof(*detail);
    const DWORD room = size;
    if (!GetDetail(data, detail, room, size)) {
      return {};
    }
    return WideString(detail->DevicePath, ::wcsnlen(detail->DevicePath, (room - kHead) / sizeof(wchar_t)));
  }

  STAutoLoanUnloadSetupapiDLL api_;
  GUID class_;
  HDEVINFO set_ = INVALID_HANDLE_VALUE;
};

class CWin32UsbTree final : public IUsbTree {
 public:
  std::unique_ptr<IUsbInterfaceSet> FindInterfaces(EUsbInterface kind) override {
    auto set = std::make_unique<CWin32UsbInterfaceSet>(kind == EUsbInterface::kHub ? kHubInterface
                                                                                   : kPrinterInterface);
    return set->IsValid() ? std::move(set) : nullptr;
  }

  std::optional<DeviceNode> Locate(const WideString& instance_id) override {
    const STAutoLoanUnloadSetupapiDLL api;
    WideString id = instance_id;  // the function's declaration wants it writable
    DEVINST node = 0;
    const CONFIGRET result = api.Call<decltype(::CM_Locate_DevNodeW), CONFIGRET>(
        "CM_Locate_DevNodeW", CR_FAILURE, &node, id.data(), static_cast<ULONG>(CM_LOCATE_DEVNODE_NORMAL));
    return result == CR_SUCCESS ? std::optional<DeviceNode>(node) : std::nullopt;
  }

  std::optional<DeviceNode> Parent(DeviceNode node) override {
    const STAutoLoanUnloadSetupapiDLL api;
    DEVINST parent = 0;
    const CONFIGRET result = api.Call<decltype(::CM_Get_Parent), CONFIGRET>("CM_Get_Parent", CR_FAILURE,
                                                                            &parent, DEVINST{node}, 0U);
    return result == CR_SUCCESS ? std::optional<DeviceNode>(parent) : std::nullopt;
  }

  WideString InstanceId(DeviceNode node) override {
    const STAutoLoanUnloadSetupapiDLL api;
    return InstanceIdOf(api, node);
  }

  WideString Service(DeviceNode node) override {
    std::array<wchar_t, kNameSize + 1> name{};  // one more: terminated also when the system fills all of it
    return ReadProperty(node, CM_DRP_SERVICE, REG_SZ, name.data(), kNameSize * sizeof(wchar_t))
               ? WideString(name.data())
               : WideString();
  }

  std::optional<std::uint32_t> Address(DeviceNode node) override {
    std::uint32_t address = 0;
    return ReadProperty(node, CM_DRP_ADDRESS, REG_DWORD, &address, sizeof(address))
               ? std::optional<std::uint32_t>(address)
               : std::nullopt;
  }

  std::unique_ptr<IUsbDevice> OpenPrinterDevice(const WideString& device_path) override {
    return OpenUsbDevice(device_path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE);
  }
  std::unique_ptr<IUsbDevice> OpenHubDevice(const WideString& device_path) override {
    return OpenUsbDevice(device_path, GENERIC_WRITE, FILE_SHARE_WRITE);
  }

 private:
  static bool ReadProperty(DeviceNode node, ULONG property, ULONG type, void* buffer, ULONG size) {
    const STAutoLoanUnloadSetupapiDLL api;
    ULONG found_type = REG_NONE;
    const CONFIGRET result = api.Call<decltype(::CM_Get_DevNode_Registry_PropertyW), CONFIGRET>(
        "CM_Get_DevNode_Registry_PropertyW", CR_FAILURE, DEVINST{node}, property, &found_type, buffer, &size,
        0U);
    return result == CR_SUCCESS && found_type == type;
  }
};

}  // namespace

std::unique_ptr<IUsbTree> MakeUsbTree() {
  return std::make_unique<CWin32UsbTree>();
}

}  // namespace tavira
