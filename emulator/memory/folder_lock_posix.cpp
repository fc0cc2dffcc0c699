#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "emulator/memory/folder_lock.h"

namespace lxemu {

CFolderLock::CFolderLock(const std::filesystem::path& folder)
    : file_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  constexpr useconds_t kPauseUs = 5'000;
  constexpr int kTries = 400;
  for (int i = 0; file_ != -1 && i < kTries && flock(static_cast<int>(file_), LOCK_EX | LOCK_NB) != 0; ++i) {
    usleep(kPauseUs);
  }
}

CFolderLock::~CFolderLock() {
  if (file_ != -1) {
    close(static_cast<int>(file_));
  }
}

}  // namespace lxemu
