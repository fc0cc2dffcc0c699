#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace tvmgr {

/** What more there is to say of long work than its bound. */
struct tagProgressWords {
  std::string usual; /**< "usually a few seconds"; may be empty */
  /** What is going on after so many ms, "file 3 of 7"; called from another thread; may be empty */
  std::function<std::string(std::uint64_t)> now;
};

/**
 * Tells on stderr what is going on and for how long, while the calling thread is inside the module. A
 * terminal gets one line that is rewritten and taken away at the end; a file or pipe gets a line only once
 * something takes longer than 2 s, and then one every 10 s.
 */
class CProgress {
 public:
  /** @param longest_ms the longest time the work can take; 0: not known. Not enabled: says nothing. */
  CProgress(std::string what, std::uint64_t longest_ms, bool enabled, tagProgressWords words = {});
  ~CProgress();
  CProgress(const CProgress&) = delete;
  CProgress& operator=(const CProgress&) = delete;

  /** Milliseconds since the construction. */
  std::uint64_t ElapsedMs() const;

 private:
  void Tick();
  std::string Line() const;

  std::string what_;
  std::uint64_t longest_ms_;
  tagProgressWords words_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::mutex mutex_;
  std::condition_variable wake_;
  bool ended_ = false; /**< guarded by mutex_ */
  std::thread ticker_;
};

/** "45 s", "15 min", "104 min 10 s". */
std::string FormatDuration(std::uint64_t ms);

}  // namespace tvmgr
