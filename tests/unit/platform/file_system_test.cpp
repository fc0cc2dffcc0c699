#include "platform/file_system.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/temporary_file.h"

namespace tavira::test {
namespace {

TEST(FileSystemTest, ARelativePathStaysTheFileThatItWasWhenItWasResolved) {
  const auto files = MakeFileSystem();
  const CTemporaryFile file;
  const std::filesystem::path absolute(file.Path());
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(absolute.parent_path());
  const WideString full = files->FullPath(absolute.filename().string<TvmgrChar>());
  std::filesystem::current_path(before);
  const auto opened = files->Create(full);
  ASSERT_NE(nullptr, opened);
  EXPECT_TRUE(opened->Write("here") && opened->Close());
  EXPECT_EQ("here", file.Read());
  EXPECT_EQ(full, files->FullPath(full));
  EXPECT_EQ(WideString(), files->FullPath({}));
}

TEST(FileSystemTest, AFileCutBackGrowsAgainFromThere) {
  const auto files = MakeFileSystem();
  const CTemporaryFile file;
  const auto opened = files->Create(files->FullPath(file.Path()));
  ASSERT_TRUE(opened != nullptr && opened->Close());
  for (const char* bytes : {"whole piece, half a pie", ", trailer"}) {
    std::uint64_t size = 0;
    ASSERT_TRUE(opened->Reopen() && opened->SeekToEnd(size) && opened->Write(bytes));
    EXPECT_TRUE(size != 0 || opened->Truncate(11));
    EXPECT_TRUE(opened->Close());
  }
  EXPECT_EQ("whole piece, trailer", file.Read());
}

TEST(FileSystemTest, WhatIsNoFileOnADiskIsRefused) {
  const auto files = MakeFileSystem();
  for (const char* name : {"NUL", "nul.bak", "CON", "C:\\NUL", "\\\\.\\NUL", "\\\\.\\pipe\\wkssvc",
                           "/dev/null", "/dev/tty", "."}) {
    const WideString path = files->FullPath(WidenAscii(name));
    const bool is_device_here = path.starts_with(WidenAscii("\\\\.\\")) || name[0] == '/' || name[0] == '.';
    EXPECT_TRUE(!is_device_here || (files->Create(path) == nullptr && files->OpenForReading(path) == nullptr))
        << name;
  }
}

}  // namespace
}  // namespace tavira::test
