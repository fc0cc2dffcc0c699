#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>

#include "test_world.h"

namespace tavira::test {

/** An operation of the module that every single fault is tried on. */
struct tagSweptOperation {
  std::string name;
  /** Prepares an initialised module with a printer chosen; not under faults. */
  std::function<void(CTestWorld&)> arrange{};
  /** The operation itself. */
  std::function<std::int32_t()> run;
  /** Results that the operation may give under a fault, beside the fault's own code and −3. */
  std::set<std::int32_t> results{TVMGR_OK};
  /** What holds after every fault, such as earlier data that must be kept; may be empty. */
  std::function<void(CTestWorld&)> check{};
};

/**
 * Fails the Nth port call, N = 1, 2, …, until the operation gets through; after each: a documented result,
 * one close for each open, no exception, and a manager that works.
 */
void SweepPortCalls(const tagSweptOperation& operation);

/** The same with the Nth allocation. */
void SweepAllocations(const tagSweptOperation& operation);

/** The same with the Nth call to the host's file system. */
void SweepFileCalls(const tagSweptOperation& operation);

}  // namespace tavira::test
