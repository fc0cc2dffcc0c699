#include <windows.h>

namespace __gnu_cxx {
/** Of the C++ run-time library: gives back the memory it keeps for exceptions when no other is left. */
extern void __freeres() noexcept;
}  // namespace __gnu_cxx

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID process_ends) {
  if (reason == DLL_PROCESS_ATTACH) {
    ::DisableThreadLibraryCalls(module);
  } else if (reason == DLL_PROCESS_DETACH && process_ends == nullptr) {
    // The library is linked into the module: what it keeps would be lost with every unloading.
    __gnu_cxx::__freeres();
  }
  // The manager is not destroyed here: that may wait for a thread, which the loader lock forbids.
  return TRUE;
}
