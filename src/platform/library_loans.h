#pragma once

#include <cstddef>
#include <mutex>

#include "platform/mutex.h"

namespace tavira {

/**
 * A library that is loaded while anyone uses it: the first loan loads it, the return of the last frees it.
 * May be used by several threads.
 */
class CLibraryLoans {
 public:
  using Load = void* (*)();
  using Free = void (*)(void* library);

  CLibraryLoans(Load load, Free free) : load_(load), free_(free) {}

  /** Null when the library cannot be loaded; nothing is lent then, and nothing is to be given back. */
  void* Take() {
    const std::lock_guard lock(mutex_);
    if (loans_ == 0) {
      library_ = load_();
    }
    loans_ += library_ != nullptr ? 1 : 0;
    return library_;
  }

  /** Once for each successful Take. */
  void GiveBack() {
    const std::lock_guard lock(mutex_);
    if (--loans_ == 0) {
      free_(library_);
      library_ = nullptr;
    }
  }

 private:
  Load load_;
  Free free_;
  CMutex mutex_;
  void* library_ = nullptr;
  std::size_t loans_ = 0;
};

}  // namespace tavira
