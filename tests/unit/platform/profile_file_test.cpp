#include "platform/profile_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

namespace tavira {
namespace {

class ProfileFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    path_ = std::filesystem::temp_directory_path() /
            ("tavira_profile_" + std::to_string(std::random_device()()) + ".ini");
    std::ofstream(path_) << "; 0=comment\n"
                            "0=before any section\n"
                            "[supportprinter]\n"
                            "0 =  Label Printer  \n"
                            ";1=off\n"
                            "2=\"  quoted  \"\n"
                            "3=\n"
                            "4=a=b;c\n"
                            "9=L\xE4"
                            "den\n"
                            "[Search]\n"
                            "UserUSBHubName=0123456789\n"
                            "[SupportPrinter]\n"
                            "5=in the second section of that name\n";
  }
  void TearDown() override { std::filesystem::remove(path_); }

  WideString Path() const {
#if defined(_WIN32)
    return path_.wstring();
#else
    return path_.u16string();
#endif
  }

  std::unique_ptr<IProfileFile> file_ = MakeProfileFile();
  std::filesystem::path path_;
};

TEST_F(ProfileFileTest, ValuesAreFoundBySectionAndKeyInAnyCase) {
  const std::pair<const char*, const char*> cases[] = {
      {"0", "Label Printer"}, {"1", ""}, {"2", "  quoted  "}, {"3", ""}, {"4", "a=b;c"}, {"5", ""}};
  for (const auto& [key, value] : cases) {
    EXPECT_EQ(WidenAscii(value), file_->ReadWide(Path(), "SupportPrinter", key, 260)) << key;
  }
  EXPECT_EQ(WidenAscii("0123456789"), file_->ReadWide(Path(), "Search", "userusbhubname", 64));
  EXPECT_EQ(WideString(), file_->ReadWide(Path(), "NoSection", "0", 64));
  EXPECT_EQ(WideString(), file_->ReadWide(Path() + WidenAscii("x"), "Search", "UserUSBHubName", 64));
}

TEST_F(ProfileFileTest, TextIsReadInTheAnsiCodePageAndCutToTheBuffer) {
  const WideString wide = file_->ReadWide(Path(), "SupportPrinter", "9", 260);
  ASSERT_EQ(5U, wide.size());
  EXPECT_EQ(0xE4, wide[1]);
  EXPECT_EQ(WidenAscii("01234"), file_->ReadWide(Path(), "Search", "UserUSBHubName", 6));
}

TEST_F(ProfileFileTest, TheModuleIsTheFileThatThisCodeWasLoadedFrom) {
  const std::filesystem::path module(file_->ModulePath());
  EXPECT_EQ("platform_tests", module.stem().string());
  EXPECT_TRUE(module.is_absolute());
  EXPECT_TRUE(std::filesystem::exists(module));
}

}  // namespace
}  // namespace tavira
