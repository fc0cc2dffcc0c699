#include "emulator_folder.h"

#include <windows.h>

#include <atomic>

namespace tavira::test {

CEmulatorFolder::CEmulatorFolder() {
  static std::atomic<int> count = 0;
  path_ = std::filesystem::temp_directory_path() /
          ("tavira_system_" + std::to_string(::GetCurrentProcessId()) + "_" + std::to_string(++count));
  std::filesystem::create_directories(path_);
  ::SetEnvironmentVariableW(L"LXEMU_MEMORY", path_.c_str());
}

CEmulatorFolder::~CEmulatorFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace tavira::test
