#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "batch/live_lines.h"

namespace tvmgr {

/**
 * Tells on stderr how a run on several printers goes. A terminal gets a table that is drawn anew, and taken away at the end;
 * a file or pipe gets a line for each printer that has ended.
 */
class CLiveTable {
 public:
  CLiveTable(const std::vector<std::string>& labels, bool enabled);
  ~CLiveTable();
  CLiveTable(const CLiveTable&) = delete;
  CLiveTable& operator=(const CLiveTable&) = delete;

  void SetRunning(std::size_t index, std::uint64_t ms, const std::string& step);
  void SetEnded(std::size_t index, std::uint64_t ms, const std::string& verdict);
  /** Draws what has changed. */
  void Draw();
  /** Writes a line that stays. */
  void Say(const std::string& text);

 private:
  void TakeAway();

  std::vector<tagLiveRow> rows_;
  bool is_enabled_;
  bool is_terminal_;
  std::size_t drawn_ = 0; /**< lines of the table above the cursor */
  std::size_t ended_ = 0;
};

}  // namespace tvmgr
