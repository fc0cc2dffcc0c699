#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tvmgr {

/** What a step of the doctor comes to. */
enum class EHealth : std::uint8_t {
  kWell,
  kLook, /**< works as far as seen, and something is to be looked at */
  kFailed,
  kNotTried /**< an earlier step stands in the way */
};

/** "well", "look", "failed", "not tried". */
const char* NameOf(EHealth health);

/** What one step has found. */
struct tagFinding {
  std::string step; /**< "port library" */
  EHealth health = EHealth::kWell;
  std::string reason; /**< what was seen, and nothing else */
  std::string cure;   /**< what to do about it; empty when nothing is to be done */
  std::uint64_t took_ms = 0;
};

/**
 * The exit code of the doctor: that of the first step that failed (4 from "answer" on, 1 before it), else 3 when something
 * is to be looked at or was not tried, else 0.
 */
int ExitCodeOf(const std::vector<tagFinding>& findings);

}  // namespace tvmgr
