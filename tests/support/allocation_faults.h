#pragma once

#include <cstdint>

namespace tavira::test {

/**
 * Makes one allocation of this program fail. Every operator new of the program counts while a fault is armed,
 * but not those inside a CAllocationPause (the emulator's and the test's own).
 */
class CAllocationFaults {
 public:
  /** The `nth` allocation from now (1 is the next) throws std::bad_alloc, or answers null where nothrow. */
  static void Arm(std::uint32_t nth);

  /** Ends the counting; true when the armed allocation was reached. */
  static bool Disarm();

  /** How many blocks are allocated now. */
  static std::int64_t Blocks();

  /** How many blocks of 1 MiB or more are allocated now, at most 64. */
  static int LargeBlocks();
};

/** Allocations in its scope neither count nor fail. */
class CAllocationPause {
 public:
  CAllocationPause();
  ~CAllocationPause();
  CAllocationPause(const CAllocationPause&) = delete;
  CAllocationPause& operator=(const CAllocationPause&) = delete;
};

}  // namespace tavira::test
