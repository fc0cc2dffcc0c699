#include "trace/trace_file.h"

#include <windows.h>

#include <chrono>
#include <cstdio>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <vector>

#include "output/command_error.h"
#include "output/console.h"
#include "output/text_encoding.h"
#include "trace/trace_text.h"

namespace tvmgr {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::string_view kFirstLine = "tvmgr trace 1\n";

std::string Milliseconds(Clock::duration duration) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", std::chrono::duration<double, std::milli>(duration).count());
  return text;
}

/** Opened so that others may read it meanwhile, and every line is with the system at once. */
HANDLE OpenToAppend(const fs::path& path, DWORD disposition) {
  return CreateFileW(path.c_str(), GENERIC_READ | FILE_APPEND_DATA, FILE_SHARE_READ, nullptr, disposition,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool WriteAll(HANDLE file, const std::string& text) {
  DWORD written = 0;
  return WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) != 0 &&
         written == text.size();
}

/** How the name of a transcript begins that is begun now (recorder/README.md). */
std::wstring TranscriptName() {
  SYSTEMTIME now{};
  GetSystemTime(&now);
  wchar_t name[40];
  std::swprintf(name, std::size(name), L"Ferrolink-%04u%02u%02u-%02u%02u%02u", now.wYear, now.wMonth,
                now.wDay, now.wHour, now.wMinute, now.wSecond);
  return name;
}

class CTrace {
 public:
  CTrace(HANDLE file, std::string path, bool with_contents)
      : path_(std::move(path)), with_contents_(with_contents), file_(file) {}

  bool WithContents() const { return with_contents_; }

  std::uint64_t Begin(const std::string& call) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const std::uint64_t number = starts_.size();
    starts_.push_back(Clock::now());
    Write(Cut() + Milliseconds(starts_.back() - start_) + " " + call);
    unfinished_ = is_within_gap_ ? kNone : number;  // behind a gap the end of the line names the call again
    return number;
  }

  void End(std::uint64_t number, const char* function, const std::string& result) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const Clock::time_point now = Clock::now();
    // The line of another thread may have come in between.
    std::string text = unfinished_ == number ? "" : Cut() + Milliseconds(now - start_) + " ... " + function;
    unfinished_ = kNone;
    Write(text + " = " + result + " took " + Milliseconds(now - starts_[number]) + "\n");
  }

  void LeaveOut(std::string_view bytes) {
    const std::lock_guard<std::mutex> lock(mutex_);
    left_out_.emplace_back(bytes);
  }

  void Line(const std::string& text) {
    const std::lock_guard<std::mutex> lock(mutex_);
    Write(Cut() + text + "\n");
  }

  /** Afterwards nothing is written any more. */
  void Close(int exit_code, bool is_stuck) {
    Line("end: exit code " + std::to_string(exit_code) + " after " + Milliseconds(Clock::now() - start_));
    if (!is_stuck) {
      AddTranscript();
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    CloseHandle(file_);
    file_ = INVALID_HANDLE_VALUE;
    if (lost_ != 0) {
      WriteError("remark: the trace in \"" + path_ + "\" is not complete: " + std::to_string(lost_) +
                 " pieces of it could not be written (Windows error " + std::to_string(error_) + ")\n");
    }
  }

 private:
  static constexpr std::uint64_t kNone = UINT64_MAX;

  /** Ends the line of a call that still runs. */
  std::string Cut() {
    const bool is_within = unfinished_ != kNone;
    unfinished_ = kNone;
    return is_within ? " ...\n" : "";
  }

  void Write(const std::string& text) {
    if (file_ == INVALID_HANDLE_VALUE) {
      return;
    }
    // Behind a gap, which may have begun in the middle of a line.
    const std::string gap =
        is_within_gap_ ? "\n... " + std::to_string(lost_) + " pieces are missing so far\n" : "";
    is_within_gap_ = !WriteAll(file_, gap + text);
    if (is_within_gap_) {
      error_ = GetLastError();
      ++lost_;
    }
  }

  static std::vector<fs::path> TranscriptFolders() {
    std::wstring program(32'768, L'\0');
    program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
    const wchar_t* const chosen = _wgetenv(L"TAVIRA_RECORD_FOLDER");
    std::error_code ignored;
    return {chosen == nullptr ? fs::path() : fs::path(chosen), fs::path(program).parent_path(),
            fs::current_path(ignored), fs::temp_directory_path(ignored)};
  }

  /** What the recorder in front of the port library has written of this process; empty: there is none. */
  fs::path Transcript() const {
    const std::wstring end = L"-" + std::to_wstring(GetCurrentProcessId()) + L".txt";
    fs::path newest;
    for (const fs::path& folder : TranscriptFolders()) {
      std::error_code error;
      for (fs::directory_iterator entry(folder, error), none; !error && entry != none;
           entry.increment(error)) {
        const std::wstring name = entry->path().filename().wstring();
        // An earlier process may have had the same number: its file's name has an earlier time.
        if (name.starts_with(L"Ferrolink-") && name.ends_with(end) && name >= earliest_ &&
            name > newest.filename().wstring()) {
          newest = entry->path();
        }
      }
      if (!newest.empty()) {
        break;
      }
    }
    return newest;
  }

  void AddTranscript() {
    const fs::path path = Transcript();
    // Without the module there was no port library, either.
    if (path.empty() || GetModuleHandleW(L"Ferrolink.dll") == nullptr) {
      return;
    }
    Line("recorder: " + QuotedBytes(ToUtf8(path.wstring())));
    std::ifstream file(path, std::ios::binary);
    CTranscriptFilter filter(with_contents_, left_out_);
    for (std::string line; std::getline(file, line);) {
      Line("| " + filter.Filter(line));
    }
  }

  const std::string path_;
  const bool with_contents_;
  const Clock::time_point start_ = Clock::now();
  const std::wstring earliest_ = TranscriptName();
  std::mutex mutex_;
  HANDLE file_;
  std::vector<Clock::time_point> starts_;  // of the calls, by their numbers
  std::uint64_t unfinished_ = kNone;
  std::uint64_t lost_ = 0;
  bool is_within_gap_ = false;
  DWORD error_ = 0;
  std::vector<std::string> left_out_;
};

// Never destroyed: a thread that waits for a search may still be at its last call when the process ends.
CTrace* trace = nullptr;

bool IsTrace(HANDLE file) {
  char begin[kFirstLine.size()] = {};
  DWORD read = 0;
  ReadFile(file, begin, sizeof begin, &read, nullptr);
  return read == 0 || std::string_view(begin, read) == kFirstLine;
}

}  // namespace

void OpenTrace(const tagGlobalOptions& options, const std::string& command) {
  if (options.trace.empty()) {
    return;
  }
  const std::string shown = "the trace \"" + options.trace + "\" ";
  const HANDLE file = OpenToAppend(ToWide(options.trace), OPEN_ALWAYS);
  const bool is_new = file != INVALID_HANDLE_VALUE && GetLastError() != ERROR_ALREADY_EXISTS;
  const DWORD error = file == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
  if (error == ERROR_SHARING_VIOLATION) {
    throw COutputFileError(shown + "is being written by another program; nothing was done");
  }
  if (error != ERROR_SUCCESS || GetFileType(file) != FILE_TYPE_DISK) {
    throw COutputFileError(
        shown + "cannot be written" +
        (error == ERROR_SUCCESS ? ": it is no file" : " (Windows error " + std::to_string(error) + ")") +
        "; nothing was done");
  }
  if (!IsTrace(file)) {
    CloseHandle(file);
    throw COutputFileError(shown + "is there, and is no trace: it was left as it is, and nothing was done");
  }
  const std::string head = std::string(kFirstLine) + TimeStamp() + " tvmgr " TVMGR_VERSION ", process " +
                           std::to_string(GetCurrentProcessId()) + ", command \"" + command + "\"\n";
  if (!WriteAll(file, head)) {
    const DWORD write_error = GetLastError();
    CloseHandle(file);
    if (is_new) {
      DeleteFileW(ToWide(options.trace).c_str());
    }
    throw COutputFileError(shown + "cannot be written (Windows error " + std::to_string(write_error) +
                           "); nothing was done");
  }
  trace = new CTrace(file, options.trace, options.trace_contents);
}

bool IsTracing() {
  return trace != nullptr;
}

bool TracesContents() {
  return trace != nullptr && trace->WithContents();
}

void CloseTrace(int exit_code, bool is_stuck) {
  if (trace != nullptr) {
    trace->Close(exit_code, is_stuck);
  }
}

void AppendToTrace(const tagGlobalOptions& options, const std::string& text) {
  const HANDLE file =
      options.trace.empty() ? INVALID_HANDLE_VALUE : OpenToAppend(ToWide(options.trace), OPEN_EXISTING);
  if (file == INVALID_HANDLE_VALUE) {
    return;
  }
  if (IsTrace(file)) {
    WriteAll(file, "\nend: " + text + "\n");
  }
  CloseHandle(file);
}

void LeaveOutOfTrace(std::string_view bytes) {
  // Everything else is left out by its looks, and may be large.
  if (IsSettingsTalk(bytes)) {
    trace->LeaveOut(bytes);
  }
}

std::uint64_t BeginTracedCall(const std::string& call) {
  return trace->Begin(call);
}

void EndTracedCall(std::uint64_t number, const char* function, const std::string& result) {
  trace->End(number, function, result);
}

}  // namespace tvmgr
