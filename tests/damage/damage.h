#pragma once

#include <functional>
#include <string>

namespace tavira::test {

/** What is wrong with an input: it ends at `at`, or the byte there is another one. */
struct tagDamage {
  std::size_t at = 0;
  bool is_cut = false;

  /** Whether the bytes from `begin` to `end` are as they were, and nothing in front of them is gone. */
  bool Spares(std::size_t begin, std::size_t end) const {
    return is_cut ? end <= at : at < begin || end <= at;
  }
};

/**
 * Hands every beginning of an input to `judge`, the whole one included, and then the input with each byte changed: to
 * every other value when the input is small, else to those that mean something somewhere. Each call may take a second of
 * the processor. Ends at the first failure and tells what led to it; prints how many there were.
 */
void ForEachDamage(const char* what, const std::string& whole,
                   const std::function<void(const std::string& bytes, const tagDamage& damage)>& judge);

}  // namespace tavira::test
