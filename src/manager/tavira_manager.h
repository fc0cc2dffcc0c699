#pragma once

#include <memory>

#include "backup/backup.h"
#include "backup/restore.h"
#include "discovery/module_settings.h"
#include "discovery/port_selection.h"
#include "discovery/search/printer_search.h"
#include "discovery/spooler_ports.h"
#include "discovery/usb/usb_enumeration.h"
#include "link/printer_port.h"
#include "manager/itavira_manager.h"
#include "platform/platform.h"
#include "settings/full_load.h"
#include "settings/prefix_operations.h"
#include "settings/printer_operations.h"
#include "settings/printer_status.h"
#include "settings/resolution_guard.h"
#include "settings/setting_loader.h"
#include "settings/setting_store.h"
#include "settings/setting_update.h"
#include "storage/file_request.h"
#include "storage/registered_files.h"
#include "storage/stored_data.h"

namespace tavira {

/** Owns every component and forwards each operation to the one that does it. */
class CTaviraManager final : public ITaviraManager {
 public:
  explicit CTaviraManager(std::unique_ptr<IPlatform> platform);

  /** Makes the port link and loads the port library: 0, −3 or −5. */
  std::int32_t Start() { return port_.Start(); }

  /** Ends what a call of another thread may be waiting for in a search, before the manager is destroyed. Any thread. */
  void GiveUpSearch() { search_.GiveUp(); }

  /**
   * Lets a moment pass for calls that still run. By the system's own means: the thread library would keep two handles
   * for the calling thread, beyond the unloading of this module.
   */
  void Pause() { platform_->Clock().Sleep(1); }

  /** Gives back what the operation that has just ended needed most of: the bytes sent and received. */
  void ReleaseBuffers();

  std::int32_t UpdatePortComInfo(const TvmgrFoundPrinter* record, const TvmgrChar* port_name);
  std::int32_t GetPrinterDeviceInfo(TvmgrFoundPrinter* record);

  std::int32_t LoadSetting(bool all, std::int32_t id) override;
  bool GetSettingValue(std::int32_t id, std::uint8_t* buffer, std::int32_t* length) override;
  std::int32_t UpdateBackupInfo(const TvmgrBackupInfo* info) override;
  std::int32_t ClearLoadList() override;
  std::int32_t ClearUpdateList() override;
  std::int32_t SetLoadList(std::uint32_t id) override;
  std::int32_t SetUpdateList(std::uint32_t id, const std::uint8_t* value, std::int32_t length) override;
  std::int32_t UpdatePrinterSetting() override;
  std::int32_t UpdatePrinterSettingNoChangeDPI() override;
  std::int32_t SetExecuteList(std::uint32_t code, const std::uint8_t* data, std::int32_t length) override;
  std::int32_t ExecutePrinterOperation() override;
  std::int32_t ClearRegistList() override;
  std::int32_t UpdateRegistList(std::uint32_t kind, const std::uint8_t* primary, std::uint32_t primary_size,
                                const std::uint8_t* secondary, std::uint32_t secondary_size) override;
  std::int32_t RegistData() override;
  std::int32_t DeleteData() override;
  std::int32_t SearchPort(void*, void*, std::uint32_t) override;
  std::int32_t StartSearchPrinter(std::uint32_t kind, std::uint32_t timeout) override;
  std::int32_t StopSearchPrinter(std::uint32_t kind) override;
  std::int32_t GetSearchPrinterStatus() override;
  std::int32_t CheckPort(std::uint32_t) override;
  std::int32_t SetCallbackWnd(HWND__*) override;
  std::int32_t SendPrnFile(void*) override;
  std::int32_t GetDeviceInfo(void*, void*, std::uint32_t, std::uint32_t) override;
  std::int32_t Backup(std::uint8_t reload) override;
  std::int32_t Restore(const TvmgrChar* path) override;
  std::int32_t GetSearchedPrinterInfo(std::int32_t kind, std::int32_t index, TvmgrFoundPrinter* record,
                                      std::uint32_t* count) override;
  std::int32_t GetRegistFileArraySize(std::int32_t kind, std::uint32_t* count) override;
  std::int32_t GetRegistFileArrayData(std::int32_t kind, std::int32_t index, TvmgrChar* name,
                                      std::uint32_t* length) override;
  std::int32_t LoadStoredData(const TvmgrChar* name, std::uint8_t mode, std::uint32_t timeout_ms) override;
  std::int32_t GetStoredData(std::uint8_t* buffer, std::uint32_t* length) override;
  std::int32_t UpdatePrefix(std::uint8_t control, std::uint8_t format, std::uint8_t delimiter) override;
  std::int32_t IsDefaultPrefix(std::uint8_t* is_default) override;
  std::int32_t GetPrinterStatus(std::uint32_t* status) override;
  std::int32_t DirectSendCommand(const std::uint8_t* data, std::int32_t length,
                                 bool allow_resolution_change) override;
  std::int32_t LoadSettingByList(bool flag) override;

 private:
  // Each component refers to those above it; the platform outlives them all.
  std::unique_ptr<IPlatform> platform_;
  CPrinterPort port_;
  CSettingStore store_;
  CResolutionGuard guard_;
  CRegisteredFiles files_;
  CStoredData stored_data_;
  tagFileRequest file_request_;
  CSettingLoader loader_;
  CBackgroundFile background_;
  CFullLoad full_load_;
  CSettingUpdate update_;
  CPrefixOperations prefix_;
  CPrinterStatus status_;
  CPrinterOperations operations_;
  CBackup backup_;
  CRestore restore_;
  CModuleSettings module_settings_;
  CSpoolerPorts spooler_;
  CUsbEnumeration usb_printers_;
  CPrinterSearch search_;
  CPortSelection selection_;
};

}  // namespace tavira
