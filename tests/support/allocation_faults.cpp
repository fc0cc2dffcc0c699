#include "allocation_faults.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::uint32_t> countdown = 0;
std::atomic<bool> reached = false;
std::atomic<std::int64_t> blocks = 0;
thread_local int paused = 0;

std::array<std::atomic<void*>, 64> large_blocks;

void ReplaceLargeBlock(void* expected, void* block) noexcept {
  for (auto& place : large_blocks) {
    void* held = expected;
    if (place.load(std::memory_order_relaxed) == expected && place.compare_exchange_strong(held, block)) {
      return;
    }
  }
}

/** The threads that allocate under test take turns, so that two steps do for the counting. */
void* Allocate(std::size_t size) noexcept {
  if (countdown != 0 && paused == 0 && --countdown == 0) {
    reached = true;
    return nullptr;
  }
  void* memory = std::malloc(size == 0 ? 1 : size);
  blocks += memory != nullptr ? 1 : 0;
  if (size >= (std::size_t{1} << 20)) {
    ReplaceLargeBlock(nullptr, memory);
  }
  return memory;
}

void Free(void* memory) noexcept {
  if (memory != nullptr) {
    --blocks;
    ReplaceLargeBlock(memory, nullptr);
  }
  std::free(memory);
}

void* AllocateOrThrow(std::size_t size) {
  void* memory = Allocate(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

}  // namespace

void* operator new(std::size_t size) {
  return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
  return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void operator delete(void* memory) noexcept {
  Free(memory);
}
void operator delete[](void* memory) noexcept {
  Free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  Free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  Free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  Free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  Free(memory);
}

namespace tavira::test {

void CAllocationFaults::Arm(std::uint32_t nth) {
  reached = false;
  countdown = nth;
}

bool CAllocationFaults::Disarm() {
  countdown = 0;
  return reached;
}

int CAllocationFaults::LargeBlocks() {
  return static_cast<int>(std::count_if(large_blocks.begin(), large_blocks.end(),
                                        [](const auto& place) { return place.load() != nullptr; }));
}

std::int64_t CAllocationFaults::Blocks() {
  return blocks;
}

CAllocationPause::CAllocationPause() {
  ++paused;
}
CAllocationPause::~CAllocationPause() {
  --paused;
}

}  // namespace tavira::test
