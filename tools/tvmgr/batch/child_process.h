#pragma once

#include <cstdint>
#include <string>

#include "batch/verdict.h"

namespace tvmgr {

/**
 * This program once more, as a process of its own, with what it starts itself: all of them end when this object goes, or
 * when this process ends, however that comes about. Its output is collected, its input is empty. It takes part in the same
 * console, so Ctrl-C reaches it.
 */
class CChildProcess {
 public:
  /** @param arguments  behind the program's name, quoted; UTF-8 */
  explicit CChildProcess(const std::string& arguments);
  ~CChildProcess();
  CChildProcess(const CChildProcess&) = delete;
  CChildProcess& operator=(const CChildProcess&) = delete;

  /** Null when the system made no process: WhyNot says so. Signalled when it has ended. */
  void* Process() const { return process_; }
  const std::string& WhyNot() const { return why_not_; }

  /** Takes what it has written so far; true when it has ended, and all of it is taken. */
  bool Collect();
  bool HasWrittenTooMuch() const;
  std::uint64_t ElapsedMs() const;
  /** The last whole line that it wrote to stderr: what it is at. */
  std::string CurrentStep() const;

  /** Ends it and all that it has started, at once. */
  void End() const;

  /** What there is to judge by, once it has ended. */
  tagChildRun Take(EChildEnd end);

 private:
  void* job_ = nullptr;
  void* process_ = nullptr;
  void* out_ = nullptr; /**< ends of pipes that are read here */
  void* err_ = nullptr;
  std::uint64_t start_ms_ = 0;
  std::string out_text_;
  std::string err_text_;
  std::string why_not_;
};

}  // namespace tvmgr
