#include "output/console.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <mutex>

#include "output/command_error.h"
#include "output/work_report.h"

namespace tvmgr {
namespace {

// Console handlers take no argument, so the event has to stand where the handler finds it.
std::atomic<HANDLE> interrupt_event{nullptr};
bool is_colour_forbidden = false;
std::mutex running_mutex;
std::string running;  // guarded by running_mutex

BOOL WINAPI OnInterrupt(DWORD kind) {
  const HANDLE event = interrupt_event.load();
  if ((kind != CTRL_C_EVENT && kind != CTRL_BREAK_EVENT) || event == nullptr) {
    return FALSE;
  }
  if (WaitForSingleObject(event, 0) == WAIT_OBJECT_0) {
    // Pressed before. No DLL is told: the port library may hang.
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(STATUS_CONTROL_C_EXIT));
  }
  SetEvent(event);
  const std::lock_guard<std::mutex> lock(running_mutex);
  if (!running.empty()) {
    WriteError("\nCtrl-C: waiting for " + running +
               " to end, so that the printer is left in order; again ends at once\n");
  }
  return TRUE;
}

}  // namespace

bool IsTerminal(EStream stream) {
  const DWORD number = stream == EStream::kInput    ? STD_INPUT_HANDLE
                       : stream == EStream::kOutput ? STD_OUTPUT_HANDLE
                                                    : STD_ERROR_HANDLE;
  // The C library takes every character device for a terminal, the null device included.
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(number), &mode) != 0;
}

std::optional<std::size_t> OutputColumns() {
  constexpr std::size_t kFewest = 40;
  if (const char* const variable = std::getenv("COLUMNS")) {
    const int columns = std::atoi(variable);
    if (columns > 0) {
      return std::max(static_cast<std::size_t>(columns), kFewest);
    }
  }
  CONSOLE_SCREEN_BUFFER_INFO info = {};
  if (GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info) == 0) {
    return std::nullopt;
  }
  // A console goes to the next line once its last column is written.
  return std::max(static_cast<std::size_t>(std::max(info.srWindow.Right - info.srWindow.Left, 0)), kFewest);
}

void ForbidColour() {
  is_colour_forbidden = true;
}

bool IsOutputColoured() {
  const wchar_t* const refused = _wgetenv(L"NO_COLOR");
  DWORD mode = 0;
  return !is_colour_forbidden && (refused == nullptr || *refused == 0) &&
         GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0 &&
         (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

CConsoleSetup::CConsoleSetup() {
  if (IsTerminal(EStream::kOutput) || IsTerminal(EStream::kError)) {
    earlier_code_page_ = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
  }
  // Consoles of before Windows 10 refuse, and show no colours.
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  if (GetConsoleMode(output, &mode) != 0 && (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) == 0 &&
      SetConsoleMode(output, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0) {
    earlier_mode_ = mode;
  }
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
}

CConsoleSetup::~CConsoleSetup() {
  if (earlier_mode_) {
    SetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), *earlier_mode_);
  }
  if (earlier_code_page_ != 0) {
    SetConsoleOutputCP(earlier_code_page_);
  }
}

CInterruptWait::CInterruptWait() {
  interrupt_event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  SetConsoleCtrlHandler(OnInterrupt, TRUE);
}

CInterruptWait::~CInterruptWait() {
  SetConsoleCtrlHandler(OnInterrupt, FALSE);
  const HANDLE event = interrupt_event.exchange(nullptr);
  if (event != nullptr) {
    CloseHandle(event);
  }
}

void CInterruptWait::SetRunning(const std::string& what) {
  const std::lock_guard<std::mutex> lock(running_mutex);
  running = what;
}

bool CInterruptWait::WaitFor(std::uint32_t ms) const {
  const HANDLE event = interrupt_event.load();
  if (event == nullptr) {
    Sleep(ms);
    return false;
  }
  return WaitForSingleObject(event, ms) == WAIT_OBJECT_0;
}

void Confirm(const std::string& what, bool agreed) {
  if (agreed) {
    return;
  }
  if (!IsTerminal(EStream::kInput)) {
    throw CUsageError("--yes is missing, and there is no terminal on which to ask: this will " + what);
  }
  const CWorkScope asking(EWork::kNone);
  WriteError("This will " + what + ". Type yes to go on: ");
  std::string answer;
  std::getline(std::cin, answer);
  while (!answer.empty() && (answer.back() == '\r' || answer.back() == ' ')) {
    answer.pop_back();
  }
  if (answer != "yes") {
    throw CFailure("not confirmed: nothing was changed");
  }
}

void WriteError(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

std::string TimeStamp() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  char text[40];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u.%03u", now.wYear, now.wMonth, now.wDay,
                now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
  return text;
}

}  // namespace tvmgr
