#include "platform/win32/setupapi_library.h"

#include <algorithm>
#include <array>

#include "platform/library_loans.h"
#include "platform/win32/library_loading.h"

namespace tavira {
namespace {

constexpr std::array<const char*, 10> kEntryPoints{"SetupDiGetClassDevsW",
                                                   "SetupDiEnumDeviceInfo",
                                                   "SetupDiEnumDeviceInterfaces",
                                                   "SetupDiGetDeviceInterfaceDetailW",
                                                   "SetupDiOpenDeviceInterfaceRegKey",
                                                   "SetupDiDestroyDeviceInfoList",
                                                   "CM_Get_Device_IDW",
                                                   "CM_Get_DevNode_Registry_PropertyW",
                                                   "CM_Get_Parent",
                                                   "CM_Locate_DevNodeW"};

void* Load() {
  return LoadLibraryQuietly(L"SETUPAPI.DLL");
}

void Free(void* library) {
  ::FreeLibrary(static_cast<HMODULE>(library));
}

CLibraryLoans loans(&Load, &Free);

}  // namespace

STAutoLoanUnloadSetupapiDLL::STAutoLoanUnloadSetupapiDLL() : library_(loans.Take()) {}

STAutoLoanUnloadSetupapiDLL::~STAutoLoanUnloadSetupapiDLL() {
  if (library_ != nullptr) {
    loans.GiveBack();
  }
}

bool STAutoLoanUnloadSetupapiDLL::IsUsable() const {
  return std::all_of(kEntryPoints.begin(), kEntryPoints.end(),
                     [this](const char* name) { return Find(name) != nullptr; });
}

void* STAutoLoanUnloadSetupapiDLL::Find(const char* name) const {
  return library_ == nullptr
             ? nullptr
             : reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(library_), name));
}

}  // namespace tavira
