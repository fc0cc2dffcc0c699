#include <windows.h>

#include <atomic>
#include <string>
#include <vector>

#include "emulator/network/network_program.h"

namespace {

std::atomic<bool> stop_requested{false};

// Ctrl-C, Ctrl-Break, and the end of the console, the session or the system.
BOOL WINAPI RequestStop(DWORD) {
  stop_requested = true;
  return TRUE;
}

std::string Utf8(const wchar_t* text) {
  std::string utf8(
      static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr)),
      '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), static_cast<int>(utf8.size()), nullptr, nullptr);
  utf8.pop_back();
  return utf8;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  SetConsoleCtrlHandler(RequestStop, TRUE);
  std::vector<std::string> arguments;
  for (int i = 1; i < argc; ++i) {
    arguments.push_back(Utf8(argv[i]));
  }
  return lxemu::RunNetworkProgram(arguments, stop_requested);
}
