#pragma once

#include <windows.h>

#include <memory>

#include "platform/usb_tree.h"

namespace tavira {

/** Opens an existing device by its path; null when that fails. */
std::unique_ptr<IUsbDevice> OpenUsbDevice(const WideString& device_path, DWORD access, DWORD share);

}  // namespace tavira
