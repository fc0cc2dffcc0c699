// The C++ layer as a host uses it: the built module, the stand-in port library, real time.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "system/emulator_folder.h"
#include "tavira/manager.hpp"

namespace tavira::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;

class ManagerTest : public ::testing::Test {
 protected:
  void SetUp() override { Folder(); }
  void TearDown() override { std::filesystem::remove(Folder() / "printer.ini"); }

  // One for all tests of a process: the port library stays loaded.
  static const std::filesystem::path& Folder() {
    static const CEmulatorFolder folder;
    return folder.Path();
  }
  static void Ini(const std::string& text) { std::ofstream(Folder() / "printer.ini") << text; }
};

TEST_F(ManagerTest, LoadsEverythingOneSettingAndAList) {
  Manager manager;
  manager.ChoosePort(L"USB001");
  EXPECT_THAT(manager.Values(), IsEmpty());
  EXPECT_EQ(std::nullopt, manager.Value(TVMGR_SETTING_CLR_Z));
  EXPECT_EQ(TVMGR_STATUS_IDLE, manager.PrinterStatus());
  EXPECT_TRUE(manager.HasDefaultPrefix());
  manager.Load();
  EXPECT_THAT(manager.Value(TVMGR_SETTING_CLR_Z), Optional(std::string("600")));
  EXPECT_THAT(manager.Value(TVMGR_SETTING_BACKGROUND), Optional(std::string()));
  EXPECT_EQ(std::nullopt, manager.Value(TVMGR_SETTING_ST));
  EXPECT_EQ(77U, manager.Values().size());  // all that can be read, and the background file
  Ini("[answers]\nCLM,S=4\nIMP,S=5\n");
  manager.Load(TVMGR_SETTING_CLM_S);
  EXPECT_THAT(manager.Value(TVMGR_SETTING_CLM_S), Optional(std::string("4")));
  manager.LoadThese({TVMGR_SETTING_CLR_Z, TVMGR_SETTING_IMP_S});
  EXPECT_THAT(manager.Value(TVMGR_SETTING_IMP_S), Optional(std::string("5")));
}

TEST_F(ManagerTest, AnUpdateReturnsOnlyWhenThePrinterShowsTheValue) {
  Manager manager;
  manager.ChooseDefault();
  manager.Load();
  manager.UpdateThese(std::vector<std::pair<Setting, std::string>>{{TVMGR_SETTING_CMP_F, "host"}});
  EXPECT_THAT(manager.Value(TVMGR_SETTING_CMP_F), Optional(std::string("host")));
  Ini("[printer]\nrefused = CMP,F\n");
  try {
    manager.Update(TVMGR_SETTING_CMP_F, "other", false);
    FAIL() << "the printer has refused the value";
  } catch (const Error& error) {
    EXPECT_EQ(TVMGR_NOT_CONFIRMED, error.Code());
    EXPECT_STREQ(
        "TVMGR_UpdatePrinterSettingNoChangeDPI: -82, the printer took the command but still shows another "
        "state",
        error.what());
  }
  EXPECT_THAT(manager.Value(TVMGR_SETTING_CMP_F), Optional(std::string("host")));
}

TEST_F(ManagerTest, FilesAreStoredListedFetchedAndDeleted) {
  Manager manager;
  manager.ChooseDefault();
  manager.Register(TVMGR_REQUEST_REGISTER_GRAPHIC, "~DYE:DOT,B,P,8,0,:B64:UE5HIGRhdGE=:");
  manager.Register(TVMGR_REQUEST_REGISTER_FORMAT, "^XA^DFE:LABEL.ZPL^FS", "^FO1,1^FDlabel^FS^XZ");
  manager.Load();
  EXPECT_THAT(manager.Files(TVMGR_LIST_PNG), ElementsAre(L"DOT.PNG"));
  EXPECT_THAT(manager.Files(TVMGR_LIST_ZPL), ElementsAre(L"LABEL.ZPL"));
  EXPECT_THAT(manager.Files(TVMGR_LIST_GRF), IsEmpty());
  const std::string data = "PNG data";
  EXPECT_THAT(manager.Fetch(TVMGR_LIST_PNG, L"DOT.PNG"),
              Optional(std::vector<std::uint8_t>(data.begin(), data.end())));
  const auto format = manager.Fetch(TVMGR_LIST_ZPL, L"LABEL.ZPL");
  ASSERT_TRUE(format);
  EXPECT_THAT(std::string(format->begin(), format->end()), HasSubstr("^FDlabel"));
  EXPECT_EQ(std::nullopt, manager.Fetch(TVMGR_LIST_PNG, L"NONE.PNG", 1000));
  manager.Delete(TVMGR_REQUEST_DELETE_GRAPHIC, "DOT.PNG");
  EXPECT_EQ(0U, manager.FileCount(TVMGR_LIST_PNG));
}

TEST_F(ManagerTest, ARestoredPrinterShowsWhatItsBackupHolds) {
  Manager manager;
  manager.ChooseDefault();
  manager.Update(TVMGR_SETTING_CMP_F, "kept");
  const std::wstring path = Folder().wstring() + L"/B\u00fcro.bak";
  manager.Backup(path);
  manager.Update(TVMGR_SETTING_CMP_F, "lost");
  manager.Restore(path);
  EXPECT_THAT(manager.Value(TVMGR_SETTING_CMP_F), Optional(std::string("kept")));
  BackupSections none{false, false, false, false, false, false, false};
  EXPECT_THROW(manager.Backup(path, none, false), Error);
}

TEST_F(ManagerTest, ATextKeepsItsCharactersThroughTheModule) {
  Manager manager;
  FoundPrinter printer;
  printer.kind = TVMGR_SEARCH_NETWORK;
  printer.address = L"192.0.2.7";
  const std::wstring port = L"B\u00fcro \u65e5 \U0001F5A8";
  manager.Choose(printer, port);
  EXPECT_EQ(port, manager.Choice().name);
  EXPECT_EQ(L"192.0.2.7", manager.Choice().address);
  EXPECT_EQ(TVMGR_SEARCH_NETWORK, manager.Choice().kind);
  manager.ChooseAddress(L"192.0.2.8");
  EXPECT_EQ(L"192.0.2.8", manager.Choice().address);
}

TEST_F(ManagerTest, WhatTheModuleWouldNotSurviveOrWouldMistakeIsAnError) {
  Manager manager;
  manager.ChooseDefault();
  const std::wstring missing = (Folder() / "none.bak").wstring();
  const std::wstring cut = missing + std::wstring(1, L'\0') + L"x";
  const std::pair<std::int32_t, std::function<void()>> cases[] = {
      {TVMGR_BAD_ARGUMENT, [&] { Manager second; }},
      {TVMGR_BAD_ARGUMENT, [&] { manager.FileName(TVMGR_LIST_PNG, static_cast<std::size_t>(-1)); }},
      {TVMGR_BAD_ARGUMENT, [&] { manager.FileName(TVMGR_LIST_PNG, 0); }},
      {TVMGR_BAD_ARGUMENT, [&] { manager.Found(TVMGR_SEARCH_USB, static_cast<std::size_t>(-1)); }},
      {TVMGR_BAD_ARGUMENT, [&] { manager.Found(TVMGR_SEARCH_USB, 0); }},
      {TVMGR_BAD_ARGUMENT, [&] { manager.FileCount(static_cast<FileList>(35)); }},
      {TVMGR_BAD_ARGUMENT, [&] { manager.Execute(TVMGR_OP_SEND_DATA); }},
      {TVMGR_BAD_ARGUMENT, [&] { manager.Send(Bytes()); }},
      {TVMGR_BAD_ARGUMENT, [&] { manager.Backup(cut); }},
      {TVMGR_BAD_ARGUMENT, [&] { manager.Restore(cut); }},
      {TVMGR_BAD_ARGUMENT, [&] { manager.Load(TVMGR_SETTING_ST); }},
      {TVMGR_BAD_ARGUMENT, [&] { manager.SearchPort(); }},
      {TVMGR_CHECK_PORT_UNSUPPORTED, [&] { manager.CheckPort(); }},
      {TVMGR_FILE_ERROR, [&] { manager.Restore(missing); }},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    try {
      cases[i].second();
      ADD_FAILURE() << "case " << i << " is no error";
    } catch (const Error& error) {
      EXPECT_EQ(cases[i].first, error.Code()) << "case " << i << ": " << error.what();
    }
  }
  EXPECT_FALSE(std::filesystem::exists(missing));  // the path that ends at the zero
  manager.ClearRegistList();
  manager.SendPrnFile();
  manager.GetDeviceInfo();
  manager.SetCallbackWnd(nullptr);
  manager.Execute(TVMGR_OP_NONE);
  manager.Send("^XA^XZ");
  manager.UpdatePrefix('!', '^', ';');
  EXPECT_FALSE(manager.HasDefaultPrefix());
  manager.UpdatePrefix('~', '^', ',');
  EXPECT_TRUE(manager.HasDefaultPrefix());
}

TEST_F(ManagerTest, ACodeOfThePortLibraryIsPassedThrough) {
  Manager manager;
  manager.ChooseAddress(L"no address at all");
  try {
    manager.PrinterStatus();
    FAIL() << "there is no such address";
  } catch (const Error& error) {
    EXPECT_EQ(-1010, error.Code());
    EXPECT_STREQ(ResultWords(1), error.Words());
    EXPECT_STREQ("TVMGR_GetPrinterStatus", error.Function());
  }
}

}  // namespace
}  // namespace tavira::test
