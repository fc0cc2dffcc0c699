#pragma once

#include <filesystem>
#include <string>

namespace tavira::test {

/**
 * A fresh memory folder for the stand-in Ferrolink.dll of this process; removed at the end. One at a time,
 * and made before the library's first call: it reads its place from the environment.
 */
class CEmulatorFolder {
 public:
  CEmulatorFolder();
  ~CEmulatorFolder();
  CEmulatorFolder(const CEmulatorFolder&) = delete;
  CEmulatorFolder& operator=(const CEmulatorFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace tavira::test
