#pragma once

#include <cstddef>

namespace tavira::bench {

/** What was asked of operator new since the program began. */
struct tagAllocations {
  std::size_t count = 0;
  std::size_t bytes = 0;

  friend tagAllocations operator-(const tagAllocations& left, const tagAllocations& right) {
    return {left.count - right.count, left.bytes - right.bytes};
  }
};

tagAllocations AllocationsSoFar();

/** What `work` asks for. */
template <typename Action>
tagAllocations CountAllocations(Action work) {
  const tagAllocations before = AllocationsSoFar();
  work();
  return AllocationsSoFar() - before;
}

}  // namespace tavira::bench
