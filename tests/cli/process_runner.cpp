#include "process_runner.h"

#include <windows.h>

#include <mutex>
#include <stdexcept>
#include <thread>

namespace {

constexpr DWORD kLongestRunMs = 60'000;

// A process inherits every pipe end that is open when it starts; those of another one would keep its pipes
// open.
std::mutex start_mutex;

std::wstring Widen(const std::string& utf8) {
  const int size = static_cast<int>(utf8.size());
  std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0)),
                    L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

// As the C library of the other side takes it apart: backslashes count only in front of a quotation mark.
std::wstring Quote(const std::wstring& argument) {
  std::wstring quoted = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t c : argument) {
    if (c == L'"') {
      quoted.append(backslashes + 1, L'\\');
    }
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    quoted += c;
  }
  return quoted.append(backslashes, L'\\') + L"\"";
}

// Under Wine the first process that takes part in a desktop starts the desktop's own process, which keeps the
// streams of its starter open for as long as it lives: whoever reads them to the end would wait for it. So a
// run without streams starts it, and this process holds it.
void StartDesktop(const std::filesystem::path& program) {
  std::wstring command_line = Quote(program.wstring()) + L" --version";
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  // A file, since the null device alone would leave the streams of this process in their place.
  const std::filesystem::path file = std::filesystem::temp_directory_path() /
                                     (L"tvmgr_test_" + std::to_wstring(GetCurrentProcessId()) + L".out");
  const HANDLE nothing = CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherited,
                                     CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = start.hStdOutput = start.hStdError = nothing;
  PROCESS_INFORMATION process{};
  if (CreateProcessW(program.c_str(), command_line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                     &start, &process)) {
    WaitForSingleObject(process.hProcess, kLongestRunMs);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  }
  CloseHandle(nothing);
  GetDesktopWindow();
}

class CPipe {
 public:
  explicit CPipe(bool parent_reads) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE read = nullptr;
    HANDLE write = nullptr;
    if (!CreatePipe(&read, &write, &inherited, 0)) {
      throw std::runtime_error("no pipe");
    }
    parent_ = parent_reads ? read : write;
    child_ = parent_reads ? write : read;
    SetHandleInformation(parent_, HANDLE_FLAG_INHERIT, 0);
  }
  ~CPipe() {
    Close(parent_);
    Close(child_);
  }
  CPipe(const CPipe&) = delete;
  CPipe& operator=(const CPipe&) = delete;

  HANDLE Child() const { return child_; }
  void CloseChild() { Close(child_); }

  void Write(const std::string& bytes) {
    DWORD written = 0;
    WriteFile(parent_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    Close(parent_);
  }

  void ReadAll(std::string& bytes) const {
    char block[4096];
    DWORD count = 0;
    while (ReadFile(parent_, block, sizeof block, &count, nullptr) && count > 0) {
      bytes.append(block, count);
    }
  }

 private:
  static void Close(HANDLE& handle) {
    if (handle != nullptr) {
      CloseHandle(handle);
      handle = nullptr;
    }
  }

  HANDLE parent_ = nullptr;
  HANDLE child_ = nullptr;
};

}  // namespace

tagRun RunProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                  const std::string& input, const tagConsoleEnds& console) {
  std::unique_lock<std::mutex> starting(start_mutex);
  static std::once_flag desktop;
  std::call_once(desktop, [&] { StartDesktop(program); });
  CPipe in(false);
  CPipe out(true);
  CPipe err(true);
  std::wstring command_line = Quote(program.wstring());
  for (const std::string& argument : arguments) {
    command_line += L" " + Quote(Widen(argument));
  }
  // Windows looks for DLLs in the current folder, too.
  const std::wstring folder = program.parent_path().wstring();
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = console.input == nullptr ? in.Child() : console.input;
  start.hStdOutput = console.output == nullptr ? out.Child() : console.output;
  start.hStdError = err.Child();
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(program.c_str(), command_line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                      folder.c_str(), &start, &process)) {
    throw std::runtime_error(program.string() + " does not start");
  }
  in.CloseChild();
  out.CloseChild();
  err.CloseChild();
  starting.unlock();
  tagRun run;
  {
    const std::jthread out_reader([&] { out.ReadAll(run.out); });
    const std::jthread err_reader([&] { err.ReadAll(run.err); });
    in.Write(input);
    if (WaitForSingleObject(process.hProcess, kLongestRunMs) != WAIT_OBJECT_0) {
      TerminateProcess(process.hProcess, 99);
    }
  }
  DWORD exit_code = 0;
  WaitForSingleObject(process.hProcess, INFINITE);
  GetExitCodeProcess(process.hProcess, &exit_code);
  run.exit_code = exit_code;
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return run;
}
