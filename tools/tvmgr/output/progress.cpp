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

CProgress::CProgress(std::string what, std::uint64_t longest_ms, bool enabled, tagProgressWords words)
    : what_(std::move(what)), longest_ms_(longest_ms), words_(std::move(words)) {
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
  const std::uint64_t elapsed_ms = ElapsedMs();
  std::string line = what_ + " ... " + FormatDuration(elapsed_ms);
  if (const std::string now = words_.now ? words_.now(elapsed_ms) : std::string(); !now.empty()) {
    line += ", " + now;
  }
  std::string bounds = words_.usual;
  if (longest_ms_ != 0) {
    bounds += (bounds.empty() ? "at most " : "; at most ") + FormatDuration(longest_ms_);
  }
  return bounds.empty() ? line : line + " (" + bounds + ")";
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
  const std::string rest = std::to_string(seconds % 60) + " s";
  if (seconds < 60) {
    return rest;
  }
  return std::to_string(seconds / 60) + " min" + (seconds % 60 == 0 ? "" : " " + rest);
}

}  // namespace tvmgr
