#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "faults.h"
#include "test_world.h"

namespace tavira::test {

/** An operation of the module that every single fault is tried on. */
struct tagSweptOperation {
  std::string name;
  /** Prepares an initialised module with a printer chosen; not under faults. */
  std::function<void(CTestWorld&)> arrange{};
  /** The operation itself. */
  std::function<std::int32_t()> run;
  /**
   * What a result of 0 claims. Asked whenever it is given: also under a fault, which is then one whose outcome
   * does not matter, or one that may leave something out, of which `struck` tells the kind.
   */
  std::function<bool(CTestWorld&, EFault struck)> is_done;
  /** Under a fault that was reached: the results it may give, by kind, beside the kind's own and −3. */
  std::map<EFault, std::set<std::int32_t>> results{};
  /** What holds after every single fault, such as earlier data that must be kept. */
  std::function<bool(CTestWorld&, std::int32_t result, EFault struck)> holds{};
};

/**
 * Fails the Nth call of each kind, N = 1, 2, …, until the operation gets through, for each operation; after each:
 * a documented result, one close for each open, nothing left open or allocated, no exception, and a manager that
 * works. Prints how often each kind struck; fails when one never did.
 */
void SweepFaults(const std::vector<tagSweptOperation>& operations);

}  // namespace tavira::test
