#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "batch/verdict.h"

namespace tvmgr {

struct tagPoolOptions {
  std::size_t jobs = 1;       /**< processes at a time, at least 1 */
  std::uint64_t limit_ms = 0; /**< after that long a process is ended; 0: never */
};

/** Told in the thread that runs the pool; may be empty. */
struct tagPoolListener {
  std::function<void(std::size_t)> started = {};
  std::function<void(std::size_t, const tagChildRun&)> ended = {};
  /** Several times a second, for each that runs: for how long, and its last line on stderr. */
  std::function<void(std::size_t, std::uint64_t, const std::string&)> runs = {};
  std::function<void()> tick = {};        /**< after each round of these */
  std::function<void()> interrupted = {}; /**< Ctrl-C was pressed for the first time */
};

/**
 * Runs this program once with each of the command lines (see CChildProcess), as many at a time as are allowed, in their order.
 * The first Ctrl-C starts no more, and those that run, which it reaches as well, end in order; after a second one they are
 * ended, at the latest 3 s later. A third one ends this process, and all others with it.
 *
 * @return what became of each; those that Ctrl-C came before are not started
 */
std::vector<tagChildRun> RunChildren(const std::vector<std::string>& command_lines,
                                     const tagPoolOptions& options, const tagPoolListener& listener);

}  // namespace tvmgr
