#include <atomic>
#include <memory>
#include <new>
#include <stdexcept>

#include "manager/tavira_manager.h"
#include "platform/platform.h"
#include "tavira/TaviraManager.h"

namespace {

using tavira::CTaviraManager;
using tavira::ITaviraManager;

/** The one manager of the process. */
std::atomic<CTaviraManager*> g_manager{nullptr};

/** How many calls may be using it just now: TVMGR_Terminate waits for those of other threads. */
std::atomic<int> g_calls{0};

/** Counts a call, from before it looks for the manager until it is through with it. */
class CCall {
 public:
  CCall() { ++g_calls; }
  ~CCall() { --g_calls; }
  CCall(const CCall&) = delete;
  CCall& operator=(const CCall&) = delete;

  CTaviraManager* Manager() const { return g_manager; }
};

/**
 * The boundary: no exception but the invalid argument of a negative index leaves the module. What is left is
 * lack of memory, as std::bad_alloc or as a size that cannot be had.
 */
template <typename Call>
std::int32_t Guarded(Call call) {
  try {
    return call();
  } catch (const std::invalid_argument&) {
    throw;
  } catch (...) {
    return TVMGR_OUT_OF_MEMORY;
  }
}

/** Calls one operation of the manager; −2 without one. */
template <typename Object, typename... Parameters, typename... Arguments>
std::int32_t Forward(std::int32_t (Object::*operation)(Parameters...), Arguments... arguments) {
  const CCall call;
  CTaviraManager* const manager = call.Manager();
  if (manager == nullptr) {
    return TVMGR_NOT_INITIALIZED;
  }
  return Guarded([&] { return (manager->*operation)(arguments...); });
}

/** Forward, for the operations that exchange bytes with the printer: what they leave behind may be large. */
template <typename Object, typename... Parameters, typename... Arguments>
std::int32_t ForwardToPrinter(std::int32_t (Object::*operation)(Parameters...), Arguments... arguments) {
  const CCall call;
  CTaviraManager* const manager = call.Manager();
  const std::int32_t result = Forward(operation, arguments...);
  if (manager != nullptr) {
    manager->ReleaseBuffers();
  }
  return result;
}

}  // namespace

extern "C" {

// Hosts have several values for true (1, -1 as 0xFF), and a parameter of type bool is read as if it held 0 or 1
// only. So these three take the byte itself, under the names that the public header declares with bool.
std::int32_t LoadSettingByte(std::uint8_t all, std::int32_t id) asm("TVMGR_LoadSetting");
std::int32_t LoadSettingByListByte(std::uint8_t flag) asm("TVMGR_LoadSettingByList");
std::int32_t DirectSendCommandByte(const std::uint8_t* data, std::int32_t length,
                                   std::uint8_t allow_resolution_change) asm("TVMGR_DirectSendCommand");

int32_t TVMGR_Initialize(void) {
  const CCall call;
  // An earlier manager is not released: a second call starts afresh, by definition.
  g_manager = nullptr;
  return Guarded([] {
    CTaviraManager* const manager = std::make_unique<CTaviraManager>(tavira::MakePlatform()).release();
    g_manager = manager;
    return manager->Start();
  });
}

int32_t TVMGR_Terminate(void) {
  const std::unique_ptr<CTaviraManager> manager(g_manager.exchange(nullptr));
  if (manager) {
    manager->GiveUpSearch();
    while (g_calls != 0) {
      manager->Pause();
    }
  }
  return TVMGR_OK;
}

std::int32_t LoadSettingByte(std::uint8_t all, std::int32_t id) {
  return ForwardToPrinter(&ITaviraManager::LoadSetting, all != 0, id);
}

bool TVMGR_GetSettingValue(int32_t id, uint8_t* buffer, int32_t* length) {
  const CCall call;
  CTaviraManager* const manager = call.Manager();
  return manager != nullptr && manager->GetSettingValue(id, buffer, length);
}

int32_t TVMGR_UpdateBackupInfo(const TvmgrBackupInfo* info) {
  return Forward(&ITaviraManager::UpdateBackupInfo, info);
}

int32_t TVMGR_ClearLoadList(void) {
  return Forward(&ITaviraManager::ClearLoadList);
}

int32_t TVMGR_ClearUpdateList(void) {
  return Forward(&ITaviraManager::ClearUpdateList);
}

int32_t TVMGR_SetLoadList(uint32_t id) {
  return Forward(&ITaviraManager::SetLoadList, id);
}

int32_t TVMGR_SetUpdateList(uint32_t id, const uint8_t* value, int32_t length) {
  return Forward(&ITaviraManager::SetUpdateList, id, value, length);
}

int32_t TVMGR_UpdatePrinterSetting(void) {
  return ForwardToPrinter(&ITaviraManager::UpdatePrinterSetting);
}

int32_t TVMGR_UpdatePrinterSettingNoChangeDPI(void) {
  return ForwardToPrinter(&ITaviraManager::UpdatePrinterSettingNoChangeDPI);
}

int32_t TVMGR_SetExecuteList(uint32_t code, const uint8_t* data, int32_t length) {
  return Forward(&ITaviraManager::SetExecuteList, code, data, length);
}

int32_t TVMGR_ExecutePrinterOperation(void) {
  return ForwardToPrinter(&ITaviraManager::ExecutePrinterOperation);
}

int32_t TVMGR_ClearRegistList(void) {
  return Forward(&ITaviraManager::ClearRegistList);
}

int32_t TVMGR_UpdateRegistList(uint32_t kind, const uint8_t* primary, uint32_t primary_size,
                               const uint8_t* secondary, uint32_t secondary_size) {
  return Forward(&ITaviraManager::UpdateRegistList, kind, primary, primary_size, secondary, secondary_size);
}

int32_t TVMGR_RegistData(void) {
  return ForwardToPrinter(&ITaviraManager::RegistData);
}

int32_t TVMGR_DeleteData(void) {
  return ForwardToPrinter(&ITaviraManager::DeleteData);
}

int32_t TVMGR_SearchPort(void* reserved1, void* reserved2, uint32_t reserved3) {
  return Forward(&ITaviraManager::SearchPort, reserved1, reserved2, reserved3);
}

int32_t TVMGR_StartSearchPrinter(uint32_t kind, uint32_t timeout) {
  return Forward(&ITaviraManager::StartSearchPrinter, kind, timeout);
}

int32_t TVMGR_StopSearchPrinter(uint32_t kind) {
  return Forward(&ITaviraManager::StopSearchPrinter, kind);
}

int32_t TVMGR_GetSearchPrinterStatus(void) {
  return Forward(&ITaviraManager::GetSearchPrinterStatus);
}

int32_t TVMGR_CheckPort(uint32_t reserved) {
  return Forward(&ITaviraManager::CheckPort, reserved);
}

int32_t TVMGR_SetCallbackWnd(struct HWND__* window) {
  return Forward(&ITaviraManager::SetCallbackWnd, window);
}

int32_t TVMGR_SendPrnFile(void* reserved) {
  return Forward(&ITaviraManager::SendPrnFile, reserved);
}

int32_t TVMGR_GetDeviceInfo(void* reserved1, void* reserved2, uint32_t reserved3, uint32_t reserved4) {
  return Forward(&ITaviraManager::GetDeviceInfo, reserved1, reserved2, reserved3, reserved4);
}

int32_t TVMGR_Backup(uint8_t reload) {
  return ForwardToPrinter(&ITaviraManager::Backup, reload);
}

int32_t TVMGR_Restore(const TvmgrChar* path) {
  return ForwardToPrinter(&ITaviraManager::Restore, path);
}

int32_t TVMGR_GetSearchedPrinterInfo(int32_t kind, int32_t index, TvmgrFoundPrinter* record,
                                     uint32_t* count) {
  return Forward(&ITaviraManager::GetSearchedPrinterInfo, kind, index, record, count);
}

int32_t TVMGR_GetRegistFileArraySize(int32_t kind, uint32_t* count) {
  return Forward(&ITaviraManager::GetRegistFileArraySize, kind, count);
}

int32_t TVMGR_GetRegistFileArrayData(int32_t kind, int32_t index, TvmgrChar* name, uint32_t* length) {
  return Forward(&ITaviraManager::GetRegistFileArrayData, kind, index, name, length);
}

int32_t TVMGR_LoadStoredData(const TvmgrChar* name, uint8_t mode, uint32_t timeout_ms) {
  return ForwardToPrinter(&ITaviraManager::LoadStoredData, name, mode, timeout_ms);
}

int32_t TVMGR_GetStoredData(uint8_t* buffer, uint32_t* length) {
  return Forward(&ITaviraManager::GetStoredData, buffer, length);
}

int32_t TVMGR_UpdatePrefix(uint8_t control, uint8_t format, uint8_t delimiter) {
  return ForwardToPrinter(&ITaviraManager::UpdatePrefix, control, format, delimiter);
}

int32_t TVMGR_IsDefaultPrefix(uint8_t* is_default) {
  return ForwardToPrinter(&ITaviraManager::IsDefaultPrefix, is_default);
}

int32_t TVMGR_GetPrinterStatus(uint32_t* status) {
  return ForwardToPrinter(&ITaviraManager::GetPrinterStatus, status);
}

std::int32_t DirectSendCommandByte(const std::uint8_t* data, std::int32_t length,
                                   std::uint8_t allow_resolution_change) {
  return ForwardToPrinter(&ITaviraManager::DirectSendCommand, data, length, allow_resolution_change != 0);
}

std::int32_t LoadSettingByListByte(std::uint8_t flag) {
  return ForwardToPrinter(&ITaviraManager::LoadSettingByList, flag != 0);
}

int32_t TVMGR_UpdatePortComInfo(const TvmgrFoundPrinter* record, const TvmgrChar* port_name) {
  return Forward(&CTaviraManager::UpdatePortComInfo, record, port_name);
}

int32_t TVMGR_GetPrinterDeviceInfo(TvmgrFoundPrinter* record) {
  return Forward(&CTaviraManager::GetPrinterDeviceInfo, record);
}

}  // extern "C"
