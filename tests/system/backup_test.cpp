// Whole-printer backup and restore through the DLL, with files of some size and paths that are hard on
// Windows.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "emulator_folder.h"
#include "tavira/TaviraManager.h"

namespace tavira::test {
namespace {

class BackupHostTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(TVMGR_OK, TVMGR_Initialize());
    TvmgrFoundPrinter record{};
    record.text3 = L"\\\\?\\usb#lx-r4100";
    ASSERT_EQ(TVMGR_OK, TVMGR_UpdatePortComInfo(&record, nullptr));
  }
  void TearDown() override { TVMGR_Terminate(); }

  static void Register(std::uint32_t kind, const std::string& command) {
    TVMGR_UpdateRegistList(kind, reinterpret_cast<const std::uint8_t*>(command.data()),
                           static_cast<std::uint32_t>(command.size()), nullptr, 0);
    ASSERT_EQ(TVMGR_OK, TVMGR_RegistData());
  }

  static std::int32_t Operate(std::uint32_t code) {
    TVMGR_SetExecuteList(code, nullptr, 0);
    return TVMGR_ExecutePrinterOperation();
  }

  static std::int32_t Backup(const std::wstring& path, std::uint8_t reload) {
    const TvmgrBackupInfo info{path.c_str(), 1, 1, 1, 1, 1, 1, 1};
    TVMGR_UpdateBackupInfo(&info);
    return TVMGR_Backup(reload);
  }

  /** A backup's bytes without the line that holds its time. */
  static std::string Contents(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const std::size_t line = bytes.find("\r\n") + 2;
    return bytes.size() < line ? bytes : bytes.erase(line, bytes.find("\r\n", line) - line);
  }

  CEmulatorFolder folder_;
};

std::string Base64(std::size_t bytes, unsigned seed) {
  constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::mt19937 random(seed);
  std::string text(bytes / 3 * 4, ' ');
  for (char& character : text) {
    character = kAlphabet[random() % kAlphabet.size()];
  }
  return text;
}

TEST_F(BackupHostTest, APrinterWith64MebibytesOfFilesComesBackAsItWas) {
  constexpr std::size_t kFileSize = 8 * 1024 * 1024 / 3 * 3 + 3;
  const std::string total = std::to_string(kFileSize);
  for (const std::string name : {"A", "B", "C", "D"}) {
    Register(TVMGR_REQUEST_REGISTER_GRAPHIC, "~DYE:" + name + ",B,P," + total + ",0,:B64:" +
                                                 Base64(kFileSize, static_cast<unsigned>(name[0])) + ":");
    Register(TVMGR_REQUEST_REGISTER_FONT, "~DYE:" + name + ",B,T," + total + ",0,:B64:" +
                                              Base64(kFileSize, static_cast<unsigned>(name[0]) + 9) + ":");
  }
  Register(TVMGR_REQUEST_REGISTER_FORMAT, "^XA^DFE:LABEL.ZPL^FS^FO1,1^FDlabel^FS^XZ");
  const std::string protect = "^XA^F(AE:B.PNG,Y^XZ";
  TVMGR_DirectSendCommand(reinterpret_cast<const std::uint8_t*>(protect.data()),
                          static_cast<std::int32_t>(protect.size()), false);
  TVMGR_SetUpdateList(TVMGR_SETTING_CMP_F, reinterpret_cast<const std::uint8_t*>("kept"), 4);
  ASSERT_EQ(TVMGR_OK, TVMGR_UpdatePrinterSetting());
  ASSERT_EQ(TVMGR_OK, TVMGR_UpdatePrefix('!', '^', ';'));

  const std::wstring first = (folder_.Path() / L"first.bak").wstring();
  const std::wstring wiped = (folder_.Path() / L"wiped.bak").wstring();
  const std::wstring second = (folder_.Path() / L"second.bak").wstring();
  ASSERT_EQ(TVMGR_OK, Backup(first, 1));
  EXPECT_LT(64U << 20, std::filesystem::file_size(first));
  ASSERT_EQ(TVMGR_OK, Operate(TVMGR_OP_FACTORY_RESET));
  ASSERT_EQ(TVMGR_OK, Operate(TVMGR_OP_RESET_PREFIX));
  ASSERT_EQ(TVMGR_OK, Operate(TVMGR_OP_INITIALIZE_MEMORY));
  ASSERT_EQ(TVMGR_OK, Backup(wiped, 1));
  EXPECT_GT(1U << 16, std::filesystem::file_size(wiped));
  ASSERT_EQ(TVMGR_OK, TVMGR_Restore(first.c_str()));
  ASSERT_EQ(TVMGR_OK, Backup(second, 1));
  EXPECT_TRUE(Contents(first) == Contents(second));  // settings, bytes and attributes; too long to print
  EXPECT_FALSE(Contents(first) == Contents(wiped));
}

TEST_F(BackupHostTest, PathsBeyondAsciiAndBeyond260CharactersAreTakenWhole) {
  const std::wstring names[] = {L"\u00e4\u65e5\u672c \u0416.bak",
                                std::wstring(120, L'x') + L"\\" + std::wstring(150, L'y')};
  for (const std::wstring& name : names) {
    const std::wstring path = folder_.Path().wstring() + L"\\" + name;
    ::CreateDirectoryW((folder_.Path().wstring() + L"\\" + std::wstring(120, L'x')).c_str(), nullptr);
    EXPECT_EQ(TVMGR_OK, Backup(path, 0));
    EXPECT_EQ(TVMGR_OK, TVMGR_Restore(path.c_str()));
    const HANDLE file =
        ::CreateFileW((L"\\\\?\\" + path).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(INVALID_HANDLE_VALUE, file);
    ::CloseHandle(file);
    EXPECT_TRUE(::DeleteFileW((L"\\\\?\\" + path).c_str()));
  }
  EXPECT_EQ(TVMGR_FILE_ERROR, Backup(folder_.Path().wstring() + L"\\" + std::wstring(300, L'z'), 0));
}

}  // namespace
}  // namespace tavira::test
