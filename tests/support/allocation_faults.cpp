#include "allocation_faults.h"

#include <cstdlib>
#include <new>

namespace {

// One thread allocates under test at a time: the harness arms only around an operation of its own thread.
std::uint32_t countdown = 0;
bool reached = false;
int paused = 0;

void* Allocate(std::size_t size) noexcept {
  if (countdown != 0 && paused == 0 && --countdown == 0) {
    reached = true;
    return nullptr;
  }
  return std::malloc(size == 0 ? 1 : size);
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
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
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

CAllocationPause::CAllocationPause() {
  ++paused;
}
CAllocationPause::~CAllocationPause() {
  --paused;
}

}  // namespace tavira::test
