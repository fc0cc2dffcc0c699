#pragma once

#include <string>

#include "tavira/TaviraManager.h"

// TaviraManager.dll is loaded when a command needs it, so that all others work without, and so that its
// absence is told in words. In this namespace the functions of the public header are pointers into the loaded
// library, null before LoadManagerLibrary.

// clang-format off
#define TVMGR_FOR_EACH_FUNCTION(X)                                                                        \
  X(TVMGR_Initialize) X(TVMGR_Terminate) X(TVMGR_UpdatePortComInfo) X(TVMGR_GetPrinterDeviceInfo)         \
  X(TVMGR_LoadSetting) X(TVMGR_ClearLoadList) X(TVMGR_SetLoadList) X(TVMGR_LoadSettingByList)             \
  X(TVMGR_GetSettingValue) X(TVMGR_ClearUpdateList) X(TVMGR_SetUpdateList) X(TVMGR_UpdatePrinterSetting)  \
  X(TVMGR_UpdatePrinterSettingNoChangeDPI) X(TVMGR_UpdatePrefix) X(TVMGR_IsDefaultPrefix)                 \
  X(TVMGR_GetPrinterStatus) X(TVMGR_DirectSendCommand) X(TVMGR_SetExecuteList)                            \
  X(TVMGR_ExecutePrinterOperation) X(TVMGR_GetRegistFileArraySize) X(TVMGR_GetRegistFileArrayData)        \
  X(TVMGR_LoadStoredData) X(TVMGR_GetStoredData) X(TVMGR_ClearRegistList) X(TVMGR_UpdateRegistList)       \
  X(TVMGR_RegistData) X(TVMGR_DeleteData) X(TVMGR_UpdateBackupInfo) X(TVMGR_Backup) X(TVMGR_Restore)      \
  X(TVMGR_StartSearchPrinter) X(TVMGR_StopSearchPrinter) X(TVMGR_GetSearchPrinterStatus)                  \
  X(TVMGR_GetSearchedPrinterInfo) X(TVMGR_SearchPort) X(TVMGR_CheckPort) X(TVMGR_SendPrnFile)             \
  X(TVMGR_GetDeviceInfo) X(TVMGR_SetCallbackWnd)
// clang-format on

namespace tvmgr {

#define TVMGR_POINTER(name) inline decltype(&::name) name = nullptr;
TVMGR_FOR_EACH_FUNCTION(TVMGR_POINTER)
#undef TVMGR_POINTER

/** Loads TaviraManager.dll from the folder of this program. Ends the command, and says why, when it cannot. */
void LoadManagerLibrary();

/** Why the module says that it cannot use Ferrolink.dll: the file that was found, and what is wrong with it. */
std::string ExplainPortLibrary();

}  // namespace tvmgr
