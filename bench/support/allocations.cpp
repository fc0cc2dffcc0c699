#include "bench/support/allocations.h"

#include <cstdlib>
#include <new>

namespace {

// The measured work runs on one thread.
tavira::bench::tagAllocations so_far;

void* Allocate(std::size_t size) {
  ++so_far.count;
  so_far.bytes += size;
  return std::malloc(size != 0 ? size : 1);
}

}  // namespace

tavira::bench::tagAllocations tavira::bench::AllocationsSoFar() {
  return so_far;
}

void* operator new(std::size_t size) {
  void* memory = Allocate(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
