#include "batch/live_table.h"

#include <windows.h>

#include <algorithm>

#include "output/console.h"
#include "output/text_layout.h"

namespace tvmgr {
namespace {

constexpr std::size_t kFewestLines = 4;

struct tagWindow {
  std::size_t columns = 79;
  std::size_t lines = 24;
};

HANDLE Terminal() {
  return GetStdHandle(STD_ERROR_HANDLE);
}

tagWindow Window() {
  CONSOLE_SCREEN_BUFFER_INFO info = {};
  if (GetConsoleScreenBufferInfo(Terminal(), &info) == 0) {
    return {};
  }
  const auto size = [](int first, int last) { return static_cast<std::size_t>(std::max(last - first, 20)); };
  // A console goes to the next line once its last column is written; the cursor's own line has to fit, too.
  return {size(info.srWindow.Left, info.srWindow.Right),
          std::max<std::size_t>(
              static_cast<std::size_t>(std::max(info.srWindow.Bottom - info.srWindow.Top, 0)), kFewestLines)};
}

// Not by control sequences: older consoles print them.
void MoveUp(std::size_t lines) {
  CONSOLE_SCREEN_BUFFER_INFO info = {};
  if (lines > 0 && GetConsoleScreenBufferInfo(Terminal(), &info) != 0) {
    const int up = std::max(info.dwCursorPosition.Y - static_cast<int>(lines), 0);
    SetConsoleCursorPosition(Terminal(), {0, static_cast<SHORT>(up)});
  }
}

}  // namespace

CLiveTable::CLiveTable(const std::vector<std::string>& labels, bool enabled)
    : rows_(labels.size()), is_enabled_(enabled), is_terminal_(IsTerminal(EStream::kError)) {
  for (std::size_t i = 0; i < labels.size(); ++i) {
    rows_[i].label = labels[i];
  }
}

CLiveTable::~CLiveTable() {
  TakeAway();
}

void CLiveTable::SetRunning(std::size_t index, std::uint64_t ms, const std::string& step) {
  rows_[index].state = tagLiveRow::EState::kRunning;
  rows_[index].ms = ms;
  rows_[index].step = step;
}

void CLiveTable::SetEnded(std::size_t index, std::uint64_t ms, const std::string& verdict) {
  tagLiveRow& row = rows_[index];
  row = {row.label, tagLiveRow::EState::kEnded, verdict, {}, ms};
  ++ended_;
  if (is_enabled_ && !is_terminal_) {
    WriteError(MakeVisible(row.label) + ": " + verdict + (ms == 0 ? "" : " after " + ShortDuration(ms)) +
               " (" + std::to_string(ended_) + " of " + std::to_string(rows_.size()) + ")\n");
  }
}

void CLiveTable::Draw() {
  if (!is_enabled_ || !is_terminal_) {
    return;
  }
  const tagWindow window = Window();
  const std::vector<std::string> lines = LiveLines(rows_, window.lines, window.columns);
  std::string text;
  for (std::size_t i = 0; i < std::max(lines.size(), drawn_); ++i) {
    const std::string line = i < lines.size() ? lines[i] : std::string();
    text += line + std::string(window.columns - std::min(DisplayWidth(line), window.columns), ' ') + "\n";
  }
  MoveUp(drawn_);
  WriteError(text);
  drawn_ = std::max(lines.size(), drawn_);
}

void CLiveTable::Say(const std::string& text) {
  TakeAway();
  WriteError(text + "\n");
  Draw();
}

void CLiveTable::TakeAway() {
  if (drawn_ > 0) {
    const std::string blank(Window().columns, ' ');
    MoveUp(drawn_);
    for (std::size_t i = 0; i < drawn_; ++i) {
      WriteError(blank + "\n");
    }
    MoveUp(drawn_);
    drawn_ = 0;
  }
}

}  // namespace tvmgr
