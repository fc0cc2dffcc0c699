#include "printer/worker.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "output/command_error.h"
#include "output/console.h"
#include "output/interrupted_result.h"
#include "output/progress.h"
#include "output/text_encoding.h"
#include "output/work_report.h"
#include "printer/manager_session.h"
#include "printer/printer_choice.h"
#include "printer/process_job.h"

namespace tvmgr {
namespace {

// Nobody types these: they stand in front of the user's own arguments.
constexpr std::string_view kWorkerMark = "--worker-reports-to=";
constexpr std::string_view kProbeMark = "--worker-probe=";

constexpr DWORD kPollMs = 100;
constexpr DWORD kLongestProbeMs = 12'000;
constexpr std::uint64_t kPauseAfterAnswerMs = 10'000;
constexpr int kSilentQuestions = 2;

class CHandle {
 public:
  explicit CHandle(HANDLE handle = nullptr) : handle_(handle) {}
  ~CHandle() {
    if (handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE) {
      CloseHandle(handle_);
    }
  }
  CHandle(const CHandle&) = delete;
  CHandle& operator=(const CHandle&) = delete;
  HANDLE Get() const { return handle_; }

 private:
  HANDLE handle_;
};

std::wstring ProgramPath() {
  std::wstring path(32'768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

// As they were when the program began: what the argument parser does to them is nothing for a worker.
wchar_t* environment = nullptr;

// How a probe reaches the printer; empty: as the command line says.
std::string probed_choice;

// What stands behind the program's name, untouched: no quoting can go wrong.
std::wstring OwnArguments() {
  const std::wstring line = GetCommandLineW();
  const std::size_t end =
      line.starts_with(L'"') ? line.find(L'"', 1) : std::min(line.find_first_of(L" \t"), line.size());
  return end == std::wstring::npos || end >= line.size() ? L"" : L" " + line.substr(end + 1);
}

// Starts this program again with another first argument. Null when that fails.
HANDLE Start(const std::wstring& mark, const HANDLE (&streams)[3], HANDLE job) {
  const std::wstring program = ProgramPath();
  std::wstring command_line = L"\"" + program + L"\" " + mark + OwnArguments();
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = streams[0];
  start.hStdOutput = streams[1];
  start.hStdError = streams[2];
  for (const HANDLE stream : streams) {
    SetHandleInformation(stream, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  }
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(program.c_str(), command_line.data(), nullptr, nullptr, TRUE,
                      CREATE_SUSPENDED | CREATE_UNICODE_ENVIRONMENT, environment, nullptr, &start,
                      &process)) {
    return nullptr;
  }
  // Fails where this process is in a job that allows no others: then the worker outlives a parent that is
  // ended from outside.
  AssignProcessToJobObject(job, process.hProcess);
  ResumeThread(process.hThread);
  CloseHandle(process.hThread);
  return process.hProcess;
}

std::atomic<int> interrupts{0};

// The worker gets every Ctrl-C as well and decides; a third one ends this process, and so the worker.
BOOL WINAPI LeaveToWorker(DWORD kind) {
  return (kind == CTRL_C_EVENT || kind == CTRL_BREAK_EVENT) && ++interrupts <= 2 ? TRUE : FALSE;
}

// None: nobody could be asked, so nothing was seen.
// `choice`: how to reach the printer; empty: as the command line says.
std::optional<DWORD> RunInProbe(HANDLE job, const std::string& choice = {}) {
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  const CHandle nothing(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    &inherited, OPEN_EXISTING, 0, nullptr));
  // No address, port or path of a device holds a quotation mark, and none ends in a backslash.
  const bool is_plain = choice.find('"') == std::string::npos && !choice.ends_with('\\');
  const std::wstring mark = L"\"" + std::wstring(kProbeMark.begin(), kProbeMark.end()) +
                            (is_plain ? ToWide(choice) : std::wstring()) + L"\"";
  const CHandle probe(Start(mark, {nothing.Get(), nothing.Get(), nothing.Get()}, job));
  if (probe.Get() == nullptr) {
    return std::nullopt;
  }
  DWORD exit_code = kExitUnreachable;
  if (WaitForSingleObject(probe.Get(), kLongestProbeMs) == WAIT_OBJECT_0) {
    GetExitCodeProcess(probe.Get(), &exit_code);
  } else {
    TerminateProcess(probe.Get(), kExitUnreachable);
  }
  return exit_code;
}

std::string StepOf(const tagWorkReport& report) {
  return report.step[0] == '\0' ? std::string("starting") : report.step;
}

// The worker may be writing it.
std::string ChoiceOf(const tagWorkReport& report) {
  const std::string_view text(report.choice, sizeof report.choice);
  return std::string(text.substr(0, text.find('\0')));
}

std::string PrinterOf(const tagWorkReport& report) {
  return report.printer[0] == '\0' ? std::string("the printer") : report.printer;
}

[[noreturn]] void End(HANDLE process, const tagWorkReport& report, const tagWatch& watch,
                      std::uint64_t worked_ms, const std::string& why) {
  TerminateProcess(process, kExitUnreachable);
  WaitForSingleObject(process, 2'000);
  if (IsTerminal(EStream::kError)) {
    WriteError("\n");  // the progress of the worker ends in the middle of a line
  }
  throw CUnreachable(PrinterOf(report) + why + ": ended after " + FormatDuration(worked_ms) + ", while " +
                     StepOf(report) + ". " + watch.left);
}

// The exit codes of exceptions: the worker, or a DLL in it, has crashed.
bool IsCrash(DWORD exit_code) {
  return exit_code >= 0xC0000000U;
}

int Watch(HANDLE process, HANDLE job, const tagWorkReport& report, const tagWatch& watch, double timeout_s) {
  const auto timeout_ms = static_cast<std::uint64_t>(timeout_s * 1000);
  std::uint64_t worked_ms = 0;
  std::uint64_t last = GetTickCount64();
  std::uint64_t next_question_ms = timeout_ms;
  int silent = 0;
  while (WaitForSingleObject(process, kPollMs) == WAIT_TIMEOUT) {
    const std::uint64_t now = GetTickCount64();
    worked_ms += report.work == EWork::kPrinter ? now - last : 0;
    last = now;
    const std::uint64_t step_ends = report.step_ends_ms;
    if (step_ends != 0 && now > step_ends + report.more_ms) {
      End(process, report, watch, worked_ms, ": Ferrolink.dll does not return from a call");
    }
    if (timeout_ms != 0 && worked_ms >= next_question_ms + report.more_ms) {
      silent = RunInProbe(job, ChoiceOf(report)).value_or(kExitDone) == kExitDone ? 0 : silent + 1;
      if (silent >= kSilentQuestions && WaitForSingleObject(process, 0) == WAIT_TIMEOUT) {
        End(process, report, watch, worked_ms, " no longer answers");
      }
      next_question_ms = silent > 0 ? 0 : worked_ms - report.more_ms + kPauseAfterAnswerMs;
    }
  }
  DWORD exit_code = 0;
  GetExitCodeProcess(process, &exit_code);
  if (exit_code == static_cast<DWORD>(STATUS_CONTROL_C_EXIT)) {
    throw CFailure(report.step[0] == '\0' ? "ended by Ctrl-C before anything was done"
                                          : "ended by Ctrl-C while " + StepOf(report) + ". " + watch.left);
  }
  if (IsCrash(exit_code)) {
    char code[16];
    std::snprintf(code, sizeof code, "0x%08lX", static_cast<unsigned long>(exit_code));
    throw CFailure(PrinterOf(report) + ": the work ended with the exception " + code +
                   " in Ferrolink.dll, in " + "TaviraManager.dll or in tvmgr itself, while " +
                   StepOf(report) + ". " + watch.left);
  }
  return static_cast<int>(exit_code);
}

}  // namespace

ERole TakeRole(std::vector<std::string>& arguments) {
  environment = GetEnvironmentStringsW();
  if (arguments.empty()) {
    return ERole::kUser;
  }
  const std::string first = arguments.front();
  if (first.starts_with(kProbeMark)) {
    probed_choice = first.substr(kProbeMark.size());
    arguments.erase(arguments.begin());
    return ERole::kProbe;
  }
  if (!first.starts_with(kWorkerMark)) {
    return ERole::kUser;
  }
  arguments.erase(arguments.begin());
  const auto number = std::strtoull(first.c_str() + kWorkerMark.size(), nullptr, 10);
  // Stays for the life of the process.
  SetWorkReport(static_cast<tagWorkReport*>(
      MapViewOfFile(reinterpret_cast<HANDLE>(number), FILE_MAP_WRITE, 0, 0, sizeof(tagWorkReport))));
  return ERole::kWorker;
}

std::optional<int> RunInWorker(const tagGlobalOptions& options, const tagWatch& watch) {
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  const CHandle memory(CreateFileMappingW(INVALID_HANDLE_VALUE, &inherited, PAGE_READWRITE, 0,
                                          sizeof(tagWorkReport), nullptr));
  const auto* const report = static_cast<const tagWorkReport*>(
      MapViewOfFile(memory.Get(), FILE_MAP_READ, 0, 0, sizeof(tagWorkReport)));
  if (report == nullptr) {
    return std::nullopt;
  }
  const CHandle job(MakeProcessJob());
  SetConsoleCtrlHandler(LeaveToWorker, TRUE);
  const std::wstring mark = std::wstring(kWorkerMark.begin(), kWorkerMark.end()) +
                            std::to_wstring(reinterpret_cast<std::uintptr_t>(memory.Get()));
  const CHandle process(Start(
      mark, {GetStdHandle(STD_INPUT_HANDLE), GetStdHandle(STD_OUTPUT_HANDLE), GetStdHandle(STD_ERROR_HANDLE)},
      job.Get()));
  if (process.Get() == nullptr) {
    return std::nullopt;
  }
  try {
    return Watch(process.Get(), job.Get(), *report, watch, options.timeout_s.value_or(watch.timeout_s));
  } catch (const CCommandError&) {
    const std::size_t size = report->found_size;
    TellInterruptedResult(std::string(report->found, std::min(size, sizeof report->found)), options.json);
    throw;
  }
}

std::optional<int> AskForStatus() {
  const CHandle job(MakeProcessJob());
  const std::optional<DWORD> exit_code = RunInProbe(job.Get());
  return exit_code ? std::optional(static_cast<int>(*exit_code)) : std::nullopt;
}

int RunProbe(const tagGlobalOptions& options) {
  tagGlobalOptions probed = options;
  if (const std::optional<tagPrinterChoice> choice = ParseChoiceText(probed_choice)) {
    probed.port = choice->port;
    probed.device = choice->device;
    probed.address = choice->address;
  }
  const CManagerSession session(probed, EPrinterUse::kStatus);
  return session.Status() == TVMGR_STATUS_UNKNOWN ? kExitUnreachable : kExitDone;
}

}  // namespace tvmgr
