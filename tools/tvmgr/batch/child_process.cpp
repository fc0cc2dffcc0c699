#include "batch/child_process.h"

#include <windows.h>

#include <algorithm>

#include "output/text_encoding.h"
#include "printer/process_job.h"

namespace tvmgr {
namespace {

// The largest reports are lists of stored files; errors are short.
constexpr std::size_t kMostBytes = 16U << 20;
constexpr DWORD kEndsWithinMs = 2'000;
constexpr UINT kEndedByParent = 1;

void Close(void*& handle) {
  if (handle != nullptr) {
    CloseHandle(handle);
    handle = nullptr;
  }
}

/** A pipe whose end to write to is inherited. False: the system made none. */
bool MakePipe(void*& read, HANDLE& write) {
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  HANDLE end = nullptr;
  if (!CreatePipe(&end, &write, &inherited, 0)) {
    return false;
  }
  SetHandleInformation(end, HANDLE_FLAG_INHERIT, 0);
  read = end;
  return true;
}

// Never waits: somebody else may hold the other end open.
void Drain(HANDLE pipe, std::string& text) {
  DWORD waiting = 0;
  while (text.size() <= kMostBytes && PeekNamedPipe(pipe, nullptr, 0, nullptr, &waiting, nullptr) &&
         waiting > 0) {
    const std::size_t before = text.size();
    text.resize(before + waiting);
    DWORD count = 0;
    const BOOL is_read = ReadFile(pipe, text.data() + before, waiting, &count, nullptr);
    text.resize(before + (is_read ? count : 0));
    if (!is_read) {
      return;
    }
  }
}

}  // namespace

CChildProcess::CChildProcess(const std::string& arguments) : start_ms_(GetTickCount64()) {
  std::wstring program(32'768, L'\0');
  program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
  std::wstring command_line = L"\"" + program + L"\" " + ToWide(arguments);
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                OPEN_EXISTING, 0, nullptr);
  PROCESS_INFORMATION process{};
  job_ = MakeProcessJob();
  const bool is_started = MakePipe(out_, start.hStdOutput) && MakePipe(err_, start.hStdError) &&
                          CreateProcessW(program.c_str(), command_line.data(), nullptr, nullptr, TRUE,
                                         CREATE_SUSPENDED, nullptr, nullptr, &start, &process);
  const DWORD error = GetLastError();
  for (HANDLE end : {start.hStdInput, start.hStdOutput, start.hStdError}) {
    if (end != nullptr && end != INVALID_HANDLE_VALUE) {
      CloseHandle(end);
    }
  }
  if (!is_started) {
    why_not_ = "the system made no process for it (error " + std::to_string(error) + ")";
    return;
  }
  process_ = process.hProcess;
  // Before its first step: what it starts belongs to the job, too.
  AssignProcessToJobObject(job_, process_);
  ResumeThread(process.hThread);
  CloseHandle(process.hThread);
}

CChildProcess::~CChildProcess() {
  Close(process_);
  Close(job_);  // ends what is left
  Close(out_);
  Close(err_);
}

bool CChildProcess::Collect() {
  const bool has_ended = WaitForSingleObject(process_, 0) == WAIT_OBJECT_0;
  Drain(out_, out_text_);
  Drain(err_, err_text_);
  return has_ended;
}

bool CChildProcess::HasWrittenTooMuch() const {
  return std::max(out_text_.size(), err_text_.size()) > kMostBytes;
}

std::uint64_t CChildProcess::ElapsedMs() const {
  return GetTickCount64() - start_ms_;
}

std::string CChildProcess::CurrentStep() const {
  const std::size_t end = err_text_.find_last_of('\n');
  if (end == std::string::npos || end == 0) {
    return {};
  }
  const std::size_t before = err_text_.find_last_of('\n', end - 1);
  const std::size_t begin = before == std::string::npos ? 0 : before + 1;
  return err_text_.substr(begin, end - begin);
}

void CChildProcess::End() const {
  // The process itself as well, where it could not be put into the job.
  TerminateJobObject(job_, kEndedByParent);
  TerminateProcess(process_, kEndedByParent);
  WaitForSingleObject(process_, kEndsWithinMs);
}

tagChildRun CChildProcess::Take(EChildEnd end) {
  tagChildRun run;
  run.end = end;
  DWORD exit_code = 0;
  GetExitCodeProcess(process_, &exit_code);
  run.exit_code = exit_code;
  run.out = std::move(out_text_);
  run.err = std::move(err_text_);
  run.took_ms = ElapsedMs();
  return run;
}

}  // namespace tvmgr
