#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) {
    ::DisableThreadLibraryCalls(module);
  }
  // The manager is not destroyed on detach: that may wait for a thread, which the loader lock forbids.
  return TRUE;
}
