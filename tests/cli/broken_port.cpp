// A Ferrolink.dll whose sends hang or crash, or which is never loaded to its end, as BROKEN_PORT says.
#include <windows.h>

#include <cstdint>
#include <cwchar>

namespace {

bool Says(const wchar_t* behaviour) {
  wchar_t said[8] = L"";
  GetEnvironmentVariableW(L"BROKEN_PORT", said, 8);
  return std::wcscmp(said, behaviour) == 0;
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
  if (reason == DLL_PROCESS_ATTACH && Says(L"load")) {
    Sleep(INFINITE);
  }
  return TRUE;
}

extern "C" {

std::int32_t Initialize(const void*) {
  return 0;
}

std::int32_t Terminate() {
  return 0;
}

std::int32_t SendData(const std::uint8_t*, std::uint32_t) {
  if (Says(L"hang")) {
    Sleep(INFINITE);
  }
  __builtin_trap();
}

std::int32_t ReceiveData(std::uint8_t*, std::uint32_t*) {
  return 0;
}

std::int32_t ClearReceiveData() {
  return 0;
}

std::int32_t GetPortComIndex() {
  return 0;
}
}
