#include "emulator_folder.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#if defined(_WIN32)
#include <windows.h>
#endif

namespace tavira::test {

CEmulatorFolder::CEmulatorFolder() {
  static std::atomic<int> count = 0;
  // The time in place of the process's number, which the standard library does not know.
  const auto now = std::chrono::system_clock::now().time_since_epoch().count();
  do {
    path_ = std::filesystem::temp_directory_path() /
            ("tavira_system_" + std::to_string(now) + "_" + std::to_string(++count));
  } while (!std::filesystem::create_directories(path_));
#if defined(_WIN32)
  ::SetEnvironmentVariableW(L"LXEMU_MEMORY", path_.c_str());
#else
  ::setenv("LXEMU_MEMORY", path_.c_str(), 1);
#endif
}

CEmulatorFolder::~CEmulatorFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace tavira::test
