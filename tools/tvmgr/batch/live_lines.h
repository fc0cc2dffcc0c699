#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tvmgr {

/** A printer while the run goes on. */
struct tagLiveRow {
  enum class EState { kWaiting, kRunning, kEnded };

  std::string label;
  EState state = EState::kWaiting;
  std::string verdict;  /**< of one that has ended */
  std::string step;     /**< of one that runs: what it is at; may be empty */
  std::uint64_t ms = 0; /**< how long it runs, or ran */
};

/** "0.8 s", "12.3 s", "2 min 5 s". */
std::string ShortDuration(std::uint64_t ms);

/**
 * The table on a terminal, with a line of sums at its end: every printer where there is room, else those that run. Control
 * characters are made visible; lines are cut to `columns`.
 *
 * @param max_lines  at least 2
 */
std::vector<std::string> LiveLines(const std::vector<tagLiveRow>& rows, std::size_t max_lines,
                                   std::size_t columns);

}  // namespace tvmgr
