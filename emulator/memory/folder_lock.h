#pragma once

#include <cstdint>
#include <filesystem>

namespace lxemu {

/// For its life no other process (and no other object of this one) has the lock of a memory folder. It is the
/// system's own, so the end of a process gives it back, and nothing is left in the folder. Waits for it, 2 s at most,
/// and goes on without then, as in a folder that cannot be written.
class CFolderLock {
 public:
  explicit CFolderLock(const std::filesystem::path& folder);
  ~CFolderLock();
  CFolderLock(const CFolderLock&) = delete;
  CFolderLock& operator=(const CFolderLock&) = delete;

 private:
  std::intptr_t file_;  ///< the system's handle; -1: none
};

}  // namespace lxemu
