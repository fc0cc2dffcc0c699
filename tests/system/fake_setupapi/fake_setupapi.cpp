// A SETUPAPI.DLL of one machine: a composite printer on port 2 of a root hub, and a printer that is just
// being unplugged. As strict about its arguments as the system's own.
#include <windows.h>
// after windows.h
#include <cfgmgr32.h>
#include <setupapi.h>

#include <cstring>
#include <cwchar>
#include <string>

namespace {

constexpr GUID kPrinterClass{0x28D78FAD, 0x5A12, 0x11D1, {0xAE, 0x5B, 0x00, 0x00, 0xF8, 0x03, 0xA8, 0xC2}};
constexpr GUID kHubClass{0xF18A0E88, 0xC30C, 0x11D0, {0x88, 0x15, 0x00, 0xA0, 0xC9, 0x06, 0xBE, 0xD8}};

struct tagDevice {
  DEVINST node;
  DEVINST parent;
  const wchar_t* id;  // null: gone
  const wchar_t* service;
  DWORD address;
  const GUID* interface_class;
  const wchar_t* path;
};

const tagDevice kDevices[] = {
    {10, 0, L"HTREE\\ROOT\\0", nullptr, 0, nullptr, nullptr},
    {20, 10, L"USB\\ROOT_HUB30\\4&1", L"USBHUB3", 0, &kHubClass, L"\\\\?\\usb#root_hub30#4&1"},
    {30, 20, L"USB\\VID_0B1C&PID_4100\\9", L"usbccgp", 2, nullptr, nullptr},
    {40, 30, L"USB\\VID_0B1C&PID_4100&MI_00\\6", L"usbprint", 0, &kPrinterClass, L"\\\\?\\usb#lx#mi_00"},
    {50, 20, nullptr, L"usbprint", 3, &kPrinterClass, L"\\\\?\\usb#gone"},
};

struct tagSet {
  const GUID* interface_class;
};

int open_sets = 0;

const tagDevice* FindNode(DEVINST node) {
  for (const tagDevice& device : kDevices) {
    if (device.node == node) {
      return &device;
    }
  }
  return nullptr;
}

const tagDevice* FindInSet(HDEVINFO set, DWORD index) {
  for (const tagDevice& device : kDevices) {
    if (device.interface_class == static_cast<tagSet*>(set)->interface_class && index-- == 0) {
      return &device;
    }
  }
  return nullptr;
}

BOOL Fail(DWORD error) {
  ::SetLastError(error);
  return FALSE;
}

}  // namespace

extern "C" {

HDEVINFO F_SetupDiGetClassDevsW(const GUID* interface_class, PCWSTR enumerator, HWND, DWORD flags) {
  const bool is_printer = ::IsEqualGUID(*interface_class, kPrinterClass) != 0;
  if ((!is_printer && !::IsEqualGUID(*interface_class, kHubClass)) || enumerator != nullptr ||
      flags != 0x12) {
    return INVALID_HANDLE_VALUE;
  }
  ++open_sets;
  return new tagSet{is_printer ? &kPrinterClass : &kHubClass};
}

BOOL F_SetupDiDestroyDeviceInfoList(HDEVINFO set) {
  --open_sets;
  delete static_cast<tagSet*>(set);
  return TRUE;
}

BOOL F_SetupDiEnumDeviceInfo(HDEVINFO set, DWORD index, SP_DEVINFO_DATA* data) {
  const tagDevice* device = FindInSet(set, index);
  if (data->cbSize != 32 || device == nullptr) {
    return Fail(device == nullptr ? ERROR_NO_MORE_ITEMS : ERROR_INVALID_USER_BUFFER);
  }
  data->DevInst = device->node;
  return TRUE;
}

BOOL F_SetupDiEnumDeviceInterfaces(HDEVINFO set, SP_DEVINFO_DATA* of_device, const GUID* interface_class,
                                   DWORD index, SP_DEVICE_INTERFACE_DATA* data) {
  const tagDevice* device = of_device == nullptr ? FindInSet(set, index)
                            : index == 0         ? FindNode(of_device->DevInst)
                                                 : nullptr;
  if (data->cbSize != 32 || device == nullptr || !::IsEqualGUID(*device->interface_class, *interface_class)) {
    return Fail(ERROR_NO_MORE_ITEMS);
  }
  data->Reserved = device->node;
  return TRUE;
}

BOOL F_SetupDiGetDeviceInterfaceDetailW(HDEVINFO, SP_DEVICE_INTERFACE_DATA* data,
                                        SP_DEVICE_INTERFACE_DETAIL_DATA_W* detail, DWORD size,
                                        DWORD* required, SP_DEVINFO_DATA*) {
  const std::wstring path = FindNode(static_cast<DEVINST>(data->Reserved))->path;
  const auto needed = static_cast<DWORD>(4 + (path.size() + 1) * sizeof(wchar_t));
  if (required != nullptr) {
    *required = needed;
  }
  if (detail == nullptr || size < needed) {
    return Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  if (detail->cbSize != 8) {
    return Fail(ERROR_INVALID_USER_BUFFER);
  }
  std::memcpy(detail->DevicePath, path.c_str(), (path.size() + 1) * sizeof(wchar_t));
  return TRUE;
}

/** The test makes the key: below its own, named by its process. */
HKEY F_SetupDiOpenDeviceInterfaceRegKey(HDEVINFO, SP_DEVICE_INTERFACE_DATA* data, DWORD reserved,
                                        REGSAM access) {
  const std::wstring path = L"Software\\tavira_test_" + std::to_wstring(::GetCurrentProcessId()) + L"\\" +
                            std::to_wstring(data->Reserved);
  HKEY key = nullptr;
  const bool opened =
      reserved == 0 && ::RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, access, &key) == ERROR_SUCCESS;
  return opened ? key : static_cast<HKEY>(INVALID_HANDLE_VALUE);
}

CONFIGRET F_CM_Get_Device_IDW(DEVINST node, wchar_t* buffer, ULONG size, ULONG flags) {
  const tagDevice* device = FindNode(node);
  if (device == nullptr || device->id == nullptr || flags != 0) {
    return CR_NO_SUCH_DEVNODE;
  }
  if (size <= std::wcslen(device->id)) {
    return CR_BUFFER_SMALL;
  }
  std::wcscpy(buffer, device->id);
  return CR_SUCCESS;
}

CONFIGRET F_CM_Locate_DevNodeW(DEVINST* node, wchar_t* id, ULONG flags) {
  for (const tagDevice& device : kDevices) {
    if (device.id != nullptr && std::wcscmp(device.id, id) == 0 && flags == 0) {
      *node = device.node;
      return CR_SUCCESS;
    }
  }
  return CR_NO_SUCH_DEVNODE;
}

CONFIGRET F_CM_Get_Parent(DEVINST* parent, DEVINST node, ULONG) {
  const tagDevice* device = FindNode(node);
  if (device == nullptr || device->parent == 0) {
    return CR_NO_SUCH_DEVNODE;
  }
  *parent = device->parent;
  return CR_SUCCESS;
}

CONFIGRET F_CM_Get_DevNode_Registry_PropertyW(DEVINST node, ULONG property, ULONG* type, void* buffer,
                                              ULONG* size, ULONG) {
  const tagDevice* device = FindNode(node);
  const void* value = nullptr;
  ULONG needed = 0;
  if (property == 0x05 && device->service != nullptr) {
    value = device->service;
    needed = static_cast<ULONG>((std::wcslen(device->service) + 1) * sizeof(wchar_t));
    *type = REG_SZ;
  } else if (property == 0x1D) {
    value = &device->address;
    needed = sizeof(device->address);
    *type = REG_DWORD;
  } else {
    return CR_NO_SUCH_VALUE;
  }
  if (*size < needed) {
    return CR_BUFFER_SMALL;
  }
  std::memcpy(buffer, value, needed);
  *size = needed;
  return CR_SUCCESS;
}

/** Takes an entry point out of the export table until the library is loaded again. */
void FakeSetupapiHide(const char* name) {
  HMODULE module = nullptr;
  ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(&kDevices), &module);
  auto* base = reinterpret_cast<char*>(module);
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const auto* exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(
      base + nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress);
  const auto* names = reinterpret_cast<const DWORD*>(base + exports->AddressOfNames);
  const auto* ordinals = reinterpret_cast<const WORD*>(base + exports->AddressOfNameOrdinals);
  auto* functions = reinterpret_cast<DWORD*>(base + exports->AddressOfFunctions);
  for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
    if (std::strcmp(base + names[i], name) == 0) {
      DWORD protection = 0;
      ::VirtualProtect(&functions[ordinals[i]], sizeof(DWORD), PAGE_READWRITE, &protection);
      functions[ordinals[i]] = 0;
      ::VirtualProtect(&functions[ordinals[i]], sizeof(DWORD), protection, &protection);
    }
  }
}

/** How many device information sets are not destroyed yet. */
int FakeSetupapiOpenSets() {
  return open_sets;
}
}
