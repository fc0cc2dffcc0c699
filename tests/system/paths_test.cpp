// What the paths of a host mean, as Windows takes them.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/file_system.h"

namespace tavira::test {
namespace {

/** A folder of its own, the current directory while it lives. */
class PathsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(folder_);
    std::filesystem::current_path(folder_);
  }
  void TearDown() override {
    std::filesystem::current_path(folder_.parent_path());
    std::filesystem::remove_all(folder_);
  }

  std::unique_ptr<IFileSystem> files_ = MakeFileSystem();
  const std::filesystem::path folder_ =
      std::filesystem::temp_directory_path() / (L"paths" + std::to_wstring(::GetCurrentProcessId()));
};

TEST_F(PathsTest, AreTheSystemsOwnInTheLongForm) {
  const std::wstring folder = folder_.wstring();
  const std::wstring long_form = L"\\\\?\\" + folder;
  const std::wstring drive = folder.substr(0, 2);
  const std::wstring long_name(300, L'n');
  const std::pair<std::wstring, std::wstring> cases[] = {
      {L"b.bak", long_form + L"\\b.bak"},
      {L".\\\\x//..\\b.bak", long_form + L"\\b.bak"},
      {folder + L"\\\\b.bak. .  ", long_form + L"\\b.bak"},
      {drive + L"b.bak", long_form + L"\\b.bak"},
      {folder.substr(2) + L"/b.bak", long_form + L"\\b.bak"},
      {folder + L"\\" + long_name + L"\\..\\\\b.bak ", long_form + L"\\b.bak"},
      {long_name, long_form + L"\\" + long_name},
      {L"\\\\server\\share\\a\\..\\b.bak", L"\\\\?\\UNC\\server\\share\\b.bak"},
      {L"//server/share/" + long_name, L"\\\\?\\UNC\\server\\share\\" + long_name},
      {L"\\\\?\\C:\\as\\..\\it stands. ", L"\\\\?\\C:\\as\\..\\it stands. "},
      {L"nul", L"\\\\.\\nul"},
      {L"\\\\.\\COM1", L"\\\\.\\COM1"},
  };
  for (const auto& [path, full] : cases) {
    EXPECT_EQ(full, files_->FullPath(path));
  }
}

TEST_F(PathsTest, OfAServerReachTheServerAtAnyLength) {
  // Wine keeps its servers in a folder of its prefix, which it names in the form of the kernel.
  const char* prefix = std::getenv("WINECONFIGDIR");
  if (prefix == nullptr) {
    GTEST_SKIP() << "no server to try it on";
  }
  const std::string name_of_server = "tavira" + std::to_string(::GetCurrentProcessId());
  const std::filesystem::path server = std::string(prefix).substr(4) + "\\dosdevices\\unc\\" + name_of_server;
  const std::wstring deep = std::wstring(120, L'd') + L"\\" + std::wstring(150, L'e');
  std::filesystem::create_directories(server / L"share");
  ::CreateDirectoryW((L"\\\\?\\" + (server / L"share").wstring() + L"\\" + deep.substr(0, 120)).c_str(),
                     nullptr);
  for (const std::wstring& name : {std::wstring(L"short.bak"), deep}) {
    const std::wstring path = L"\\\\" + server.filename().wstring() + L"\\share\\" + name;
    const auto file = files_->Create(files_->FullPath(path));
    ASSERT_NE(nullptr, file) << path.size();
    EXPECT_TRUE(file->Write("on the server") && file->Close());
    const std::wstring there = L"\\\\?\\" + (server / L"share").wstring() + L"\\" + name;
    WIN32_FILE_ATTRIBUTE_DATA found{};
    EXPECT_TRUE(::GetFileAttributesExW(there.c_str(), GetFileExInfoStandard, &found));
    EXPECT_EQ(13U, found.nFileSizeLow);
    EXPECT_TRUE(::DeleteFileW(there.c_str()));
  }
  std::filesystem::remove_all(server);
}

}  // namespace
}  // namespace tavira::test
