// A backup on a file system of 64 KiB, in a mount namespace of this process.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "backup/backup_format.h"
#include "support/module_test.h"
#include "support/temporary_file.h"

namespace tavira::test {
namespace {

class FullDiskTest : public CModuleTest {
 protected:
  void SetUp() override {
    CModuleTest::SetUp();
    std::filesystem::create_directory(folder_);
    if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("none", folder_.c_str(), "tmpfs", 0, "size=64k") != 0) {
      GTEST_SKIP() << "needs the right to mount";
    }
  }
  void TearDown() override {
    ::umount(folder_.c_str());
    std::filesystem::remove(folder_);
    CModuleTest::TearDown();
  }

  const std::filesystem::path folder_ =
      std::filesystem::temp_directory_path() / ("tavira_full_" + std::to_string(::getpid()));
};

TEST_F(FullDiskTest, TheTornPieceIsTakenBackAndTheTrailerClosesTheWholeOnes) {
  world_.printer.PutFile("E:A.PNG", std::string(20000, 'a'));
  world_.printer.PutFile("E:B.PNG", std::string(40000, 'b'));  // the disk ends within this one
  world_.printer.PutFile("E:C.TTF", "never asked for");
  LoadAll();
  const WideString path = (folder_ / "full.bak").string<TvmgrChar>();
  const TvmgrBackupInfo info{path.c_str(), 1, 1, 1, 1, 1, 1, 1};
  TVMGR_UpdateBackupInfo(&info);
  EXPECT_EQ(TVMGR_FILE_ERROR, TVMGR_Backup(0));
  std::ifstream file(folder_ / "full.bak", std::ios::binary);
  const std::string contents{std::istreambuf_iterator<char>(file), {}};
  EXPECT_TRUE(contents.ends_with("^XA^F(AE:A.PNG,N^XZ\r\n" + std::string(kBackupTrailer)));
  EXPECT_EQ(std::string::npos, contents.find("B.PNG"));
  EXPECT_EQ(1U, world_.Sent().size() - 1);  // A, B
}

TEST_F(FullDiskTest, ADiskWithoutAnyRoomLeavesAnEmptyFile) {
  std::ofstream(folder_ / "others") << std::string(65536, 'x');
  const WideString path = (folder_ / "full.bak").string<TvmgrChar>();
  const TvmgrBackupInfo info{path.c_str(), 0, 0, 0, 0, 0, 1, 0};
  TVMGR_UpdateBackupInfo(&info);
  EXPECT_EQ(TVMGR_FILE_ERROR, TVMGR_Backup(0));
  EXPECT_EQ(0U, std::filesystem::file_size(folder_ / "full.bak"));
}

}  // namespace
}  // namespace tavira::test
