#include "batch/child_pool.h"

#include <windows.h>

#include <atomic>
#include <memory>

#include "batch/child_process.h"
#include "output/progress.h"

namespace tvmgr {
namespace {

constexpr DWORD kPollMs = 30;
constexpr std::uint64_t kTickMs = 250;
// What a second Ctrl-C leaves to the processes, which end at once by themselves.
constexpr std::uint64_t kAfterSecondMs = 3'000;

// Console handlers take no argument.
std::atomic<int> presses{0};

BOOL WINAPI CountPresses(DWORD kind) {
  return (kind == CTRL_C_EVENT || kind == CTRL_BREAK_EVENT) && ++presses <= 2 ? TRUE : FALSE;
}

class CHandlerScope {
 public:
  CHandlerScope() {
    presses = 0;
    SetConsoleCtrlHandler(CountPresses, TRUE);
  }
  ~CHandlerScope() { SetConsoleCtrlHandler(CountPresses, FALSE); }
  CHandlerScope(const CHandlerScope&) = delete;
  CHandlerScope& operator=(const CHandlerScope&) = delete;
};

template <class Function, class... Arguments>
void Tell(const Function& function, const Arguments&... arguments) {
  if (function) {
    function(arguments...);
  }
}

class CPool {
 public:
  CPool(const std::vector<std::string>& command_lines, const tagPoolOptions& options,
        const tagPoolListener& listener)
      : lines_(command_lines), options_(options), listener_(listener), runs_(command_lines.size()) {}

  std::vector<tagChildRun> Run() {
    while (next_ < lines_.size() || !running_.empty()) {
      NoticeInterrupts();
      StartMore();
      Wait();
      std::erase_if(running_, [this](const tagRunning& one) { return Look(one); });
      if (const std::uint64_t now = GetTickCount64(); now >= next_tick_ms_) {
        next_tick_ms_ = now + kTickMs;
        for (const tagRunning& one : running_) {
          Tell(listener_.runs, one.index, one.process->ElapsedMs(), one.process->CurrentStep());
        }
        Tell(listener_.tick);
      }
    }
    NoticeInterrupts();  // one that the last process has ended by
    return std::move(runs_);
  }

 private:
  struct tagRunning {
    std::size_t index;
    std::unique_ptr<CChildProcess> process;
  };

  void NoticeInterrupts() {
    if (presses > 0 && !is_interrupted_) {
      is_interrupted_ = true;
      Tell(listener_.interrupted);
    }
    if (is_interrupted_) {
      for (; next_ < lines_.size(); ++next_) {
        runs_[next_].why = "Ctrl-C was pressed before its turn";
        Tell(listener_.ended, next_, runs_[next_]);
      }
    }
    if (presses > 1 && end_all_at_ms_ == 0) {
      end_all_at_ms_ = GetTickCount64() + kAfterSecondMs;
    }
  }

  void StartMore() {
    for (; next_ < lines_.size() && running_.size() < options_.jobs && presses == 0; ++next_) {
      auto process = std::make_unique<CChildProcess>(lines_[next_]);
      if (process->Process() == nullptr) {
        runs_[next_].why = process->WhyNot();
        Tell(listener_.ended, next_, runs_[next_]);
        continue;
      }
      Tell(listener_.started, next_);
      running_.push_back({next_, std::move(process)});
    }
  }

  void Wait() const {
    std::vector<HANDLE> handles;
    for (const tagRunning& one : running_) {
      handles.push_back(one.process->Process());
    }
    if (!handles.empty()) {
      WaitForMultipleObjects(static_cast<DWORD>(handles.size()), handles.data(), FALSE, kPollMs);
    }
  }

  /** True when it is over. */
  bool Look(const tagRunning& one) {
    CChildProcess& process = *one.process;
    EChildEnd end = EChildEnd::kItself;
    if (!process.Collect()) {
      if (process.HasWrittenTooMuch()) {
        end = EChildEnd::kTooMuch;
      } else if (options_.limit_ms != 0 && process.ElapsedMs() > options_.limit_ms) {
        end = EChildEnd::kTooLong;
      } else if (end_all_at_ms_ != 0 && GetTickCount64() > end_all_at_ms_) {
        end = EChildEnd::kInterrupted;
      } else {
        return false;
      }
      process.End();
      process.Collect();
    }
    tagChildRun& run = runs_[one.index];
    run = process.Take(end);
    if (end == EChildEnd::kTooLong) {
      run.why = "its tvmgr was ended after " + FormatDuration(options_.limit_ms) + " (--limit)";
    }
    Tell(listener_.ended, one.index, run);
    return true;
  }

  const CHandlerScope handler_;
  const std::vector<std::string>& lines_;
  const tagPoolOptions& options_;
  const tagPoolListener& listener_;
  std::vector<tagChildRun> runs_;
  std::vector<tagRunning> running_;
  std::size_t next_ = 0;
  bool is_interrupted_ = false;
  std::uint64_t end_all_at_ms_ = 0;
  std::uint64_t next_tick_ms_ = 0;
};

}  // namespace

std::vector<tagChildRun> RunChildren(const std::vector<std::string>& command_lines,
                                     const tagPoolOptions& options, const tagPoolListener& listener) {
  return CPool(command_lines, options, listener).Run();
}

}  // namespace tvmgr
