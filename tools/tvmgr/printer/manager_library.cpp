#include "printer/manager_library.h"

#include <windows.h>

#include "computer/library_files.h"
#include "output/command_error.h"
#include "trace/trace_file.h"
#include "trace/traced_calls.h"

namespace tvmgr {

void LoadManagerLibrary() {
  if (TVMGR_Initialize != nullptr) {
    return;
  }
  // Only from there: the one in some other folder might be anybody's.
  const std::wstring path = ManagerLibraryPath();
  const HMODULE module = LoadLibraryW(path.c_str());
  const DWORD error = module == nullptr ? GetLastError() : 0;
  bool complete = module != nullptr;
  const auto look_up = [&](const char* name) {
    void* const address = module == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(module, name));
    complete = complete && address != nullptr;
    return address;
  };
#define TVMGR_LOOK_UP(name) name = reinterpret_cast<decltype(name)>(look_up(#name));
  TVMGR_FOR_EACH_FUNCTION(TVMGR_LOOK_UP)
#undef TVMGR_LOOK_UP
  if (!complete) {
    TVMGR_Initialize = nullptr;
    throw CFailure("TaviraManager.dll cannot be used: " + ExplainLibrary(path, ManagerEntryPoints(), error) +
                   ". " + kOneDelivery);
  }
  if (IsTracing()) {
    TraceCalls();
  }
}

std::string ExplainPortLibrary() {
  const std::wstring path = FindPortLibrary();
  if (path.empty()) {
    return NoPortLibrary();
  }
  return "Ferrolink.dll cannot be used: " +
         ExplainLibrary(path, PortEntryPoints(),
                        LoadLibraryW(path.c_str()) == nullptr ? GetLastError() : ERROR_SUCCESS);
}

}  // namespace tvmgr
