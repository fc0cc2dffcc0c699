#include "output/progress.h"

#include "output/console.h"
#include "output/text_layout.h"

namespace tvmgr {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kFirstTerminalLine{300};
constexpr milliseconds kTerminalInterval{500};
constexpr milliseconds kFirstPipeLine{2000};
constexpr milliseconds kPipeInterval{10000};

}  // namespace

CProgress::CProgress(std::string what, std::uint64_t longest_ms, bool enabled)
    : what_(std::move(what)), longest_ms_(longest_ms) {
  if (enabled) {
    ticker_ = std::thread([this] { Tick(); });
  }
}

CProgress::~CProgress() {
  if (ticker_.joinable()) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      ended_ = true;
    }
    wake_.notify_one();
    ticker_.join();
  }
}

std::uint64_t CProgress::ElapsedMs() const {
  const auto elapsed = std::chrono::steady_clock::now() - start_;
  return static_cast<std::uint64_t>(std::chrono::duration_cast<milliseconds>(elapsed).count());
}

std::string CProgress::Line() const {
  std::string line = what_ + " ... " + FormatDuration(ElapsedMs());
  if (longest_ms_ != 0) {
    line += " (at most " + FormatDuration(longest_ms_) + ")";
  }
  return line;
}

void CProgress::Tick() {
  const bool terminal = IsTerminal(EStream::kError);
  milliseconds pause = terminal ? kFirstTerminalLine : kFirstPipeLine;
  std::size_t drawn = 0;
  std::unique_lock<std::mutex> lock(mutex_);
  while (!wake_.wait_for(lock, pause, [this] { return ended_; })) {
    std::string line = Line();
    if (terminal) {
      const std::size_t width = DisplayWidth(line);
      line.append(drawn > width ? drawn - width : 0, ' ');
      drawn = width;
      WriteError("\r" + line);
      pause = kTerminalInterval;
    } else {
      WriteError(line + "\n");
      pause = kPipeInterval;
    }
  }
  if (drawn > 0) {
    WriteError("\r" + std::string(drawn, ' ') + "\r");
  }
}

std::string FormatDuration(std::uint64_t ms) {
  const std::uint64_t seconds = ms / 1000;
  if (seconds < 120) {
    return std::to_string(seconds) + " s";
  }
  const std::uint64_t minutes = (seconds + 30) / 60;
  if (minutes < 60) {
    return std::to_string(minutes) + " min";
  }
  return std::to_string(minutes / 60) + " h " + std::to_string(minutes % 60) + " min";
}

}  // namespace tvmgr
