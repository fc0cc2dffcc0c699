#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "link/printer_port.h"

namespace tavira {

/**
 * Puts the printer into a neutral print-resolution state around an operation and back into the state in which
 * it was found.
 *
 * Captured once and kept until Invalidate; a snapshot taken of a neutral printer makes both sides free. Each
 * side that has to write is one transaction that saves. The flag `no_resolution_change` keeps settings 3, 4
 * and 5 out of both writes; setting 84 is written either way.
 */
class CResolutionGuard {
 public:
  explicit CResolutionGuard(CPrinterPort& port) : port_(port) {}

  /**
   * Captures when nothing valid is held, then neutralises. Only when the port has a
   * link; most callers ignore the result.
   */
  std::int32_t Begin(bool no_resolution_change);

  /**
   * Writes the captured state back unless it is neutral. −2 without a link; most callers ignore the result.
   */
  std::int32_t End(bool no_resolution_change);

  /** The printer may have changed: End does nothing and the next Begin reads it again. */
  void Invalidate() { valid_ = false; }

  /** The captured value of setting 84; empty before the first capture. */
  const std::string& ModeText() const { return mode_; }

 private:
  std::int32_t Capture();
  void TakeSnapshot(std::string_view answer);
  bool IsNeutral() const;
  std::int32_t Send(bool no_resolution_change, const std::array<std::int32_t, 3>& resolutions,
                    std::string_view mode);

  CPrinterPort& port_;
  std::array<std::int32_t, 3> resolutions_{600, 600, 600};
  std::string mode_;
  bool valid_ = false;
};

/**
 * The guard around one operation: begun here, ended with the scope, whatever happens between. Neither result
 * matters to the operation.
 */
class CGuardedScope {
 public:
  CGuardedScope(CResolutionGuard& guard, bool no_resolution_change);
  ~CGuardedScope();
  CGuardedScope(const CGuardedScope&) = delete;
  CGuardedScope& operator=(const CGuardedScope&) = delete;

 private:
  CResolutionGuard& guard_;
  bool no_resolution_change_;
};

}  // namespace tavira
