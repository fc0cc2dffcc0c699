// A Ferrolink.dll whose sends hang or crash, as BROKEN_PORT says.
#include <windows.h>

#include <cstdint>
#include <cwchar>

extern "C" {

std::int32_t Initialize(const void*) {
  return 0;
}

std::int32_t Terminate() {
  return 0;
}

std::int32_t SendData(const std::uint8_t*, std::uint32_t) {
  wchar_t behaviour[8] = L"";
  GetEnvironmentVariableW(L"BROKEN_PORT", behaviour, 8);
  if (std::wcscmp(behaviour, L"hang") == 0) {
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
