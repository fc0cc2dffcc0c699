#include <windows.h>

#include "emulator/memory/folder_lock.h"

namespace lxemu {

// Whoever has the file open has the lock: it is shared with nobody, and gone when it is closed.
CFolderLock::CFolderLock(const std::filesystem::path& folder) : file_(-1) {
  constexpr DWORD kPauseMs = 5;
  constexpr int kTries = 400;
  const std::wstring path = (folder / L"lock").wstring();
  for (int i = 0; i < kTries && file_ == -1; ++i) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
      file_ = reinterpret_cast<std::intptr_t>(file);
    } else if (GetLastError() == ERROR_SHARING_VIOLATION || GetLastError() == ERROR_ACCESS_DENIED) {
      Sleep(kPauseMs);
    } else {
      return;
    }
  }
}

CFolderLock::~CFolderLock() {
  if (file_ != -1) {
    CloseHandle(reinterpret_cast<HANDLE>(file_));
  }
}

}  // namespace lxemu
