#include "platform/win32/usb_device_win32.h"

// after windows.h
#include <usbioctl.h>
#include <usbprint.h>
#include <winioctl.h>

#include <cstddef>
#include <string>
#include <utility>

namespace tavira {
namespace {

// The drivers' own declarations and the numbers that the parsers go by.
static_assert(static_cast<DWORD>(EUsbRequest::kPrinterDeviceId) == IOCTL_USBPRINT_GET_1284_ID);
static_assert(static_cast<DWORD>(EUsbRequest::kNodeInformation) == IOCTL_USB_GET_NODE_INFORMATION);
static_assert(static_cast<DWORD>(EUsbRequest::kConnectionInformation) ==
              IOCTL_USB_GET_NODE_CONNECTION_INFORMATION);
static_assert(static_cast<DWORD>(EUsbRequest::kConnectionDescriptor) ==
              IOCTL_USB_GET_DESCRIPTOR_FROM_NODE_CONNECTION);
static_assert(offsetof(USB_NODE_INFORMATION, NodeType) == usb_layout::kNodeType);
static_assert(UsbHub == usb_layout::kNodeTypeHub);
static_assert(offsetof(USB_NODE_INFORMATION, u.HubInformation.HubDescriptor.bNumberOfPorts) ==
              usb_layout::kNodePortCount);
static_assert(offsetof(USB_NODE_CONNECTION_INFORMATION, ConnectionIndex) == usb_layout::kConnectionPort);
static_assert(offsetof(USB_NODE_CONNECTION_INFORMATION, DeviceDescriptor) == usb_layout::kDeviceDescriptor);
static_assert(sizeof(USB_NODE_CONNECTION_INFORMATION) == usb_layout::kConnectionInformationSize);
static_assert(sizeof(USB_PIPE_INFO) == usb_layout::kPipeSize);
static_assert(offsetof(USB_DEVICE_DESCRIPTOR, idVendor) == usb_layout::kVendor);
static_assert(offsetof(USB_DEVICE_DESCRIPTOR, idProduct) == usb_layout::kProduct);
static_assert(offsetof(USB_DEVICE_DESCRIPTOR, iProduct) == usb_layout::kProductString);
static_assert(sizeof(USB_DEVICE_DESCRIPTOR) == usb_layout::kDeviceDescriptorSize);
static_assert(offsetof(USB_DESCRIPTOR_REQUEST, SetupPacket) == usb_layout::kSetup);
static_assert(sizeof(USB_DESCRIPTOR_REQUEST) == usb_layout::kDescriptor);

class CWin32UsbDevice final : public IUsbDevice {
 public:
  CWin32UsbDevice(const char* path, DWORD access, DWORD share)
      : handle_(::CreateFileA(path, access, share, nullptr, OPEN_EXISTING, 0, nullptr)) {}
  ~CWin32UsbDevice() override {
    if (IsOpen()) {
      ::CloseHandle(handle_);
    }
  }
  CWin32UsbDevice(const CWin32UsbDevice&) = delete;
  CWin32UsbDevice& operator=(const CWin32UsbDevice&) = delete;

  bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }

  std::size_t Ask(EUsbRequest request, std::span<const std::uint8_t> question,
                  std::span<std::uint8_t> answer) override {
    // The driver only reads its input, though the declaration does not say so.
    void* input = question.empty() ? nullptr : const_cast<std::uint8_t*>(question.data());
    DWORD got = 0;
    const bool done =
        ::DeviceIoControl(handle_, static_cast<DWORD>(request), input, static_cast<DWORD>(question.size()),
                          answer.data(), static_cast<DWORD>(answer.size()), &got, nullptr) != 0;
    return done ? got : 0;
  }

 private:
  HANDLE handle_;
};

}  // namespace

std::unique_ptr<IUsbDevice> OpenUsbDevice(const WideString& device_path, DWORD access, DWORD share) {
  std::string path;
  for (const wchar_t character : device_path) {
    if (character >= 0x80) {
      return nullptr;  // the system makes device paths of ASCII alone
    }
    path.push_back(static_cast<char>(character));
  }
  auto device = std::make_unique<CWin32UsbDevice>(path.c_str(), access, share);
  return device->IsOpen() ? std::move(device) : nullptr;
}

}  // namespace tavira
