#include "test_console.h"

#include <windows.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace {

BOOL WINAPI TakeNoNotice(DWORD kind) {
  return kind == CTRL_C_EVENT ? TRUE : FALSE;
}

HANDLE Open(const wchar_t* name) {
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  return CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                     OPEN_EXISTING, 0, nullptr);
}

// Takes part in the console of a process that is there for nothing else: only a new process gets one without a window.
bool AttachToNewConsole() {
  FreeConsole();
  HANDLE read = nullptr;
  HANDLE write = nullptr;
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  CreatePipe(&read, &write, &inherited, 0);
  SetHandleInformation(write, HANDLE_FLAG_INHERIT, 0);
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = read;  // until its end the shell waits
  wchar_t shell[] = L"cmd.exe";
  PROCESS_INFORMATION process{};
  bool is_attached = false;
  if (CreateProcessW(nullptr, shell, nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr, nullptr, &start,
                     &process)) {
    for (int i = 0; i < 200 && !is_attached; ++i) {
      is_attached = AttachConsole(process.dwProcessId) != 0;
      Sleep(is_attached ? 0 : 25);
    }
    CloseHandle(write);
    WaitForSingleObject(process.hProcess, 10'000);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  } else {
    CloseHandle(write);
  }
  CloseHandle(read);
  return is_attached;
}

}  // namespace

CTestConsole::CTestConsole() {
  const DWORD numbers[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
  HANDLE streams[3];
  for (int i = 0; i < 3; ++i) {
    streams[i] = GetStdHandle(numbers[i]);
  }
  // Once for the life of this process: to leave a console ends it under Wine.
  static const bool is_attached = AttachToNewConsole();
  for (int i = 0; i < 3; ++i) {
    SetStdHandle(numbers[i], streams[i]);
  }
  input_ = Open(L"CONIN$");
  output_ = Open(L"CONOUT$");
  if (!is_attached || input_ == INVALID_HANDLE_VALUE || output_ == INVALID_HANDLE_VALUE) {
    throw std::runtime_error("no console");
  }
  SetConsoleCtrlHandler(TakeNoNotice, TRUE);
}

CTestConsole::~CTestConsole() {
  CloseHandle(input_);
  CloseHandle(output_);
}

void CTestConsole::Type(const std::string& keys) const {
  for (const char key : keys) {
    INPUT_RECORD record{};
    record.EventType = KEY_EVENT;
    record.Event.KeyEvent.bKeyDown = TRUE;
    record.Event.KeyEvent.wRepeatCount = 1;
    record.Event.KeyEvent.uChar.UnicodeChar = key == '\n' ? L'\r' : static_cast<wchar_t>(key);
    record.Event.KeyEvent.wVirtualKeyCode = key == '\n' ? VK_RETURN : 0;
    DWORD written = 0;
    WriteConsoleInputW(input_, &record, 1, &written);
  }
}

void CTestConsole::Clear() const {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  GetConsoleScreenBufferInfo(output_, &info);
  const auto size = static_cast<DWORD>(info.dwSize.X) * static_cast<DWORD>(info.dwSize.Y);
  DWORD written = 0;
  FillConsoleOutputCharacterW(output_, L' ', size, {0, 0}, &written);
  FillConsoleOutputAttribute(output_, info.wAttributes, size, {0, 0}, &written);
  SetConsoleCursorPosition(output_, {0, 0});
}

bool CTestConsole::ShowsColour() const {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  GetConsoleScreenBufferInfo(output_, &info);
  const auto size = static_cast<std::size_t>(info.dwSize.X) * static_cast<std::size_t>(info.dwSize.Y);
  std::wstring text(size, L'\0');
  std::vector<WORD> attributes(size);
  DWORD read = 0;
  ReadConsoleOutputCharacterW(output_, text.data(), static_cast<DWORD>(size), {0, 0}, &read);
  ReadConsoleOutputAttribute(output_, attributes.data(), static_cast<DWORD>(size), {0, 0}, &read);
  const bool is_green = std::any_of(attributes.begin(), attributes.end(), [](WORD attribute) {
    return (attribute & (FOREGROUND_RED | FOREGROUND_GREEN | FOREGROUND_BLUE)) == FOREGROUND_GREEN;
  });
  return is_green || text.find(L"[32mwritten") != std::wstring::npos;
}

void CTestConsole::PressCtrlC() {
  GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
}
