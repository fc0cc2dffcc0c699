#pragma once

namespace tavira {

/**
 * Runs a step whose outcome does not matter to the operation: neither its result nor a lack of memory in it.
 */
template <typename Step>
void IgnoreOutcome(Step step) noexcept {
  try {
    step();
  } catch (...) {
  }
}

}  // namespace tavira
