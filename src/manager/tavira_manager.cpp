#include "manager/tavira_manager.h"

#include "platform/host_bytes.h"
#include "settings/direct_command.h"
#include "storage/file_deletion.h"
#include "storage/file_registration.h"

namespace tavira {

CTaviraManager::CTaviraManager(std::unique_ptr<IPlatform> platform)
    : platform_(std::move(platform)),
      port_(platform_->Clock(), platform_->Modules()),
      guard_(port_),
      files_(port_, platform_->Text()),
      stored_data_(port_, platform_->Text()),
      loader_(port_, store_, guard_),
      background_(files_, stored_data_, store_),
      full_load_(loader_, files_, background_),
      update_(port_, store_, guard_, full_load_),
      prefix_(port_, store_, loader_),
      status_(port_),
      operations_(port_, store_, guard_, full_load_, files_, background_, status_),
      backup_(port_, store_, full_load_, files_, stored_data_, *platform_),
      restore_(port_, guard_, full_load_, platform_->Files()),
      module_settings_(platform_->Profiles()),
      spooler_(platform_->LocalMachine(), platform_->Usb(), module_settings_),
      usb_printers_(platform_->Usb(), module_settings_, platform_->Text()),
      search_({platform_->Sockets(), platform_->Threads(), platform_->Clock(), platform_->Text()},
              usb_printers_),
      selection_(port_, spooler_) {}

void CTaviraManager::ReleaseBuffers() {
  stored_data_.ReleaseRawAnswer();
  if (port_.HasLink()) {
    port_.Link().ReleaseLargeBuffers();
  }
}

std::int32_t CTaviraManager::UpdatePortComInfo(const TvmgrFoundPrinter* record, const TvmgrChar* port_name) {
  return selection_.Select(record, port_name);
}

std::int32_t CTaviraManager::GetPrinterDeviceInfo(TvmgrFoundPrinter* record) {
  return selection_.Report(record);
}

std::int32_t CTaviraManager::LoadSetting(bool all, std::int32_t id) {
  return all ? full_load_.LoadEverything() : loader_.LoadOne(id);
}

bool CTaviraManager::GetSettingValue(std::int32_t id, std::uint8_t* buffer, std::int32_t* length) {
  return store_.CopyValue(static_cast<std::uint32_t>(id), buffer, length);
}

std::int32_t CTaviraManager::UpdateBackupInfo(const TvmgrBackupInfo* info) {
  backup_.SetInfo(info);
  return TVMGR_OK;
}

std::int32_t CTaviraManager::ClearLoadList() {
  store_.ClearLoadList();
  return TVMGR_OK;
}

std::int32_t CTaviraManager::ClearUpdateList() {
  store_.ClearUpdateList();
  return TVMGR_OK;
}

std::int32_t CTaviraManager::SetLoadList(std::uint32_t id) {
  store_.AppendToLoadList(id);
  return TVMGR_OK;
}

std::int32_t CTaviraManager::SetUpdateList(std::uint32_t id, const std::uint8_t* value, std::int32_t length) {
  store_.AppendToUpdateList(id, CopyHostBytes(value, length));
  return TVMGR_OK;
}

std::int32_t CTaviraManager::UpdatePrinterSetting() {
  return update_.Run(false);
}

std::int32_t CTaviraManager::UpdatePrinterSettingNoChangeDPI() {
  return update_.Run(true);
}

std::int32_t CTaviraManager::SetExecuteList(std::uint32_t code, const std::uint8_t* data,
                                            std::int32_t length) {
  operations_.SetRequest(code, data, length);
  return TVMGR_OK;
}

std::int32_t CTaviraManager::ExecutePrinterOperation() {
  return operations_.Execute();
}

// The list that this empties is one that nothing ever fills.
std::int32_t CTaviraManager::ClearRegistList() {
  return TVMGR_OK;
}

std::int32_t CTaviraManager::UpdateRegistList(std::uint32_t kind, const std::uint8_t* primary,
                                              std::uint32_t primary_size, const std::uint8_t* secondary,
                                              std::uint32_t secondary_size) {
  file_request_ = {kind, CopyHostBytes(primary, primary_size), CopyHostBytes(secondary, secondary_size)};
  return TVMGR_OK;
}

std::int32_t CTaviraManager::RegistData() {
  return RegisterStoredFile(port_, files_, platform_->Text(), file_request_);
}

std::int32_t CTaviraManager::DeleteData() {
  return DeleteStoredFile(port_, files_, file_request_);
}

std::int32_t CTaviraManager::SearchPort(void*, void*, std::uint32_t) {
  return TVMGR_BAD_ARGUMENT;
}

std::int32_t CTaviraManager::StartSearchPrinter(std::uint32_t kind, std::uint32_t timeout) {
  return search_.Start(kind, timeout);
}

std::int32_t CTaviraManager::StopSearchPrinter(std::uint32_t kind) {
  return search_.Stop(kind);
}

std::int32_t CTaviraManager::GetSearchPrinterStatus() {
  return search_.Status();
}

std::int32_t CTaviraManager::CheckPort(std::uint32_t) {
  return TVMGR_CHECK_PORT_UNSUPPORTED;
}

std::int32_t CTaviraManager::SetCallbackWnd(HWND__*) {
  return TVMGR_OK;
}

std::int32_t CTaviraManager::SendPrnFile(void*) {
  return TVMGR_OK;
}

std::int32_t CTaviraManager::GetDeviceInfo(void*, void*, std::uint32_t, std::uint32_t) {
  return TVMGR_OK;
}

std::int32_t CTaviraManager::Backup(std::uint8_t reload) {
  return backup_.Run(reload);
}

std::int32_t CTaviraManager::Restore(const TvmgrChar* path) {
  return restore_.Run(path);
}

std::int32_t CTaviraManager::GetSearchedPrinterInfo(std::int32_t kind, std::int32_t index,
                                                    TvmgrFoundPrinter* record, std::uint32_t* count) {
  return search_.GetInfo(kind, index, record, count);
}

std::int32_t CTaviraManager::GetRegistFileArraySize(std::int32_t kind, std::uint32_t* count) {
  return files_.GetCount(kind, count);
}

std::int32_t CTaviraManager::GetRegistFileArrayData(std::int32_t kind, std::int32_t index, TvmgrChar* name,
                                                    std::uint32_t* length) {
  return files_.GetName(kind, index, name, length);
}

std::int32_t CTaviraManager::LoadStoredData(const TvmgrChar* name, std::uint8_t mode,
                                            std::uint32_t timeout_ms) {
  return stored_data_.Load(name, mode, timeout_ms);
}

std::int32_t CTaviraManager::GetStoredData(std::uint8_t* buffer, std::uint32_t* length) {
  return stored_data_.Get(buffer, length);
}

std::int32_t CTaviraManager::UpdatePrefix(std::uint8_t control, std::uint8_t format, std::uint8_t delimiter) {
  return prefix_.Update({control, format, delimiter});
}

std::int32_t CTaviraManager::IsDefaultPrefix(std::uint8_t* is_default) {
  return prefix_.IsDefault(is_default);
}

std::int32_t CTaviraManager::GetPrinterStatus(std::uint32_t* status) {
  return status_.Get(status);
}

std::int32_t CTaviraManager::DirectSendCommand(const std::uint8_t* data, std::int32_t length,
                                               bool allow_resolution_change) {
  return SendDirectCommand(port_, guard_, data, length, allow_resolution_change);
}

std::int32_t CTaviraManager::LoadSettingByList(bool flag) {
  return loader_.LoadByList(flag);
}

}  // namespace tavira
