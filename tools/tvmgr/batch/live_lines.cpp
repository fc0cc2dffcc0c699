#include "batch/live_lines.h"

#include <algorithm>

#include "output/text_layout.h"

namespace tvmgr {
namespace {

using EState = tagLiveRow::EState;

std::string StateWords(const tagLiveRow& row) {
  switch (row.state) {
    case EState::kWaiting:
      return "-";
    case EState::kRunning:
      // The step's own time and bounds have no room here.
      return ShortDuration(row.ms) + "  " + row.step.substr(0, row.step.find(" ... "));
    case EState::kEnded:
      return row.verdict + (row.ms == 0 ? "" : ", " + ShortDuration(row.ms));
  }
  return {};
}

std::string Sums(const std::vector<tagLiveRow>& rows) {
  std::size_t ended = 0;
  std::size_t done = 0;
  std::size_t running = 0;
  for (const tagLiveRow& row : rows) {
    ended += row.state == EState::kEnded ? 1 : 0;
    done += row.state == EState::kEnded && row.verdict == "done" ? 1 : 0;
    running += row.state == EState::kRunning ? 1 : 0;
  }
  return std::to_string(ended) + " of " + std::to_string(rows.size()) + ": " + std::to_string(done) +
         " done, " + std::to_string(ended - done) + " not; " + std::to_string(running) + " at work";
}

}  // namespace

std::string ShortDuration(std::uint64_t ms) {
  const std::uint64_t seconds = ms / 1000;
  if (seconds < 60) {
    return std::to_string(seconds) + "." + std::to_string(ms % 1000 / 100) + " s";
  }
  return std::to_string(seconds / 60) + " min " + std::to_string(seconds % 60) + " s";
}

std::vector<std::string> LiveLines(const std::vector<tagLiveRow>& rows, std::size_t max_lines,
                                   std::size_t columns) {
  const bool all_fit = rows.size() + 1 <= max_lines;
  std::vector<const tagLiveRow*> shown;
  std::size_t width = 0;
  for (const tagLiveRow& row : rows) {
    if ((all_fit || row.state == EState::kRunning) && shown.size() + 1 < max_lines) {
      shown.push_back(&row);
      width = std::max(width, DisplayWidth(MakeVisible(row.label)));
    }
  }
  width = std::min(width, columns / 2);
  std::vector<std::string> lines;
  for (const tagLiveRow* const row : shown) {
    std::string line = CutToWidth(MakeVisible(row->label), width);
    line.append(width - DisplayWidth(line) + 2, ' ');
    lines.push_back(CutToWidth(line + MakeVisible(StateWords(*row)), columns));
  }
  lines.push_back(CutToWidth(Sums(rows), columns));
  return lines;
}

}  // namespace tvmgr
