// A library that tells how its loading went: the thread's error mode, in the environment.
#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) {
    const bool is_quiet = (::GetThreadErrorMode() & SEM_FAILCRITICALERRORS) != 0;
    ::SetEnvironmentVariableW(L"ERROR_MODE_PROBE", is_quiet ? L"quiet" : L"box");
  }
  return TRUE;
}
