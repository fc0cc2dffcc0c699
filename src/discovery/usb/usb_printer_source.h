#pragma once

#include <cstdint>
#include <vector>

#include "platform/wide_string.h"

namespace tavira {

/**
 * One USB printer interface of this machine; texts are empty and numbers 0 where something could not be read.
 */
struct tagUsbRawEntry {
  WideString instance_id;  /**< of the device that has the printer interface */
  WideString device_path;  /**< the port library opens it */
  WideString model;        /**< the "MDL:" field of the device ID */
  WideString device_id;    /**< IEEE 1284 */
  WideString product_name; /**< from the device's string descriptors */
  std::int32_t vendor_number = 0;
  std::int32_t product_number = 0;
};

/** Lists the USB printers present. */
class IUsbPrinterSource {
 public:
  virtual ~IUsbPrinterSource() = default;
  virtual std::vector<tagUsbRawEntry> Enumerate() = 0;
};

}  // namespace tavira
