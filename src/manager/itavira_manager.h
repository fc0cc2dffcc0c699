#pragma once

#include <cstdint>

#include "tavira/TaviraManager.h"

namespace tavira {

/**
 * What the exports call. The order of the operations is fixed: it is the order of the virtual table. Each
 * operation is documented at its export in the public header.
 */
class ITaviraManager {
 public:
  virtual ~ITaviraManager() = default;
  virtual std::int32_t LoadSetting(bool all, std::int32_t id) = 0;
  virtual bool GetSettingValue(std::int32_t id, std::uint8_t* buffer, std::int32_t* length) = 0;
  virtual std::int32_t UpdateBackupInfo(const TvmgrBackupInfo* info) = 0;
  virtual std::int32_t ClearLoadList() = 0;
  virtual std::int32_t ClearUpdateList() = 0;
  virtual std::int32_t SetLoadList(std::uint32_t id) = 0;
  virtual std::int32_t SetUpdateList(std::uint32_t id, const std::uint8_t* value, std::int32_t length) = 0;
  virtual std::int32_t UpdatePrinterSetting() = 0;
  virtual std::int32_t UpdatePrinterSettingNoChangeDPI() = 0;
  virtual std::int32_t SetExecuteList(std::uint32_t code, const std::uint8_t* data, std::int32_t length) = 0;
  virtual std::int32_t ExecutePrinterOperation() = 0;
  virtual std::int32_t ClearRegistList() = 0;
  virtual std::int32_t UpdateRegistList(std::uint32_t kind, const std::uint8_t* primary,
                                        std::uint32_t primary_size, const std::uint8_t* secondary,
                                        std::uint32_t secondary_size) = 0;
  virtual std::int32_t RegistData() = 0;
  virtual std::int32_t DeleteData() = 0;
  virtual std::int32_t SearchPort(void* reserved1, void* reserved2, std::uint32_t reserved3) = 0;
  virtual std::int32_t StartSearchPrinter(std::uint32_t kind, std::uint32_t timeout) = 0;
  virtual std::int32_t StopSearchPrinter(std::uint32_t kind) = 0;
  virtual std::int32_t GetSearchPrinterStatus() = 0;
  virtual std::int32_t CheckPort(std::uint32_t reserved) = 0;
  virtual std::int32_t SetCallbackWnd(HWND__* window) = 0;
  virtual std::int32_t SendPrnFile(void* reserved) = 0;
  virtual std::int32_t GetDeviceInfo(void* reserved1, void* reserved2, std::uint32_t reserved3,
                                     std::uint32_t reserved4) = 0;
  virtual std::int32_t Backup(std::uint8_t reload) = 0;
  virtual std::int32_t Restore(const TvmgrChar* path) = 0;
  virtual std::int32_t GetSearchedPrinterInfo(std::int32_t kind, std::int32_t index,
                                              TvmgrFoundPrinter* record, std::uint32_t* count) = 0;
  virtual std::int32_t GetRegistFileArraySize(std::int32_t kind, std::uint32_t* count) = 0;
  virtual std::int32_t GetRegistFileArrayData(std::int32_t kind, std::int32_t index, TvmgrChar* name,
                                              std::uint32_t* length) = 0;
  virtual std::int32_t LoadStoredData(const TvmgrChar* name, std::uint8_t mode, std::uint32_t timeout_ms) = 0;
  virtual std::int32_t GetStoredData(std::uint8_t* buffer, std::uint32_t* length) = 0;
  virtual std::int32_t UpdatePrefix(std::uint8_t control, std::uint8_t format, std::uint8_t delimiter) = 0;
  virtual std::int32_t IsDefaultPrefix(std::uint8_t* is_default) = 0;
  virtual std::int32_t GetPrinterStatus(std::uint32_t* status) = 0;
  virtual std::int32_t DirectSendCommand(const std::uint8_t* data, std::int32_t length,
                                         bool allow_resolution_change) = 0;
  virtual std::int32_t LoadSettingByList(bool flag) = 0;
};

}  // namespace tavira
