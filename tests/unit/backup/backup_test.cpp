#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "backup/backup_format.h"
#include "backup/restore.h"
#include "backup_file/backup_parser.h"
#include "support/module_test.h"
#include "support/temporary_file.h"

#if defined(_WIN32)
extern "C" __declspec(dllimport) int TerminateProcess(void* process, unsigned code);
#endif

namespace tavira::test {
namespace {

constexpr const char* kHeaderStart = "^FXLX-R4100SeriesTavira^FS\r\n^FX20260405130709^FS\r\n^FX";

TvmgrBackupInfo InfoFor(const CTemporaryFile& file) {
  TvmgrBackupInfo info{};
  info.path = file.Path().c_str();
  return info;
}

class BackupTest : public CModuleTest {
 protected:
  /** Backs up the sections that `choose` sets. */
  std::int32_t Backup(const std::function<void(TvmgrBackupInfo&)>& choose, std::uint8_t reload = 0) {
    TvmgrBackupInfo info = InfoFor(file_);
    choose(info);
    EXPECT_EQ(TVMGR_OK, TVMGR_UpdateBackupInfo(&info));
    EXPECT_EQ(TVMGR_OK, TVMGR_UpdateBackupInfo(nullptr));
    return TVMGR_Backup(reload);
  }

  CTemporaryFile file_;
};

void ChooseAll(TvmgrBackupInfo& info) {
  info.settings = info.section_p = info.section_i = info.section_t = info.section_f = info.section_c =
      info.section_b = 1;
}

TEST_F(BackupTest, SectionsThatHoldNothingStandInTheHeaderOnly) {
  EXPECT_EQ(TVMGR_OK, Backup([](TvmgrBackupInfo& info) { info.section_c = 1; }));
  EXPECT_EQ(std::string(kHeaderStart) + "C^FS\r\n^XA^H(E^XZ\r\n", file_.Read());
  EXPECT_TRUE(world_.Sent().empty());
  EXPECT_EQ(TVMGR_OK, Backup([](TvmgrBackupInfo& info) {
              info.section_p = 1;
              info.section_c = 2;  // counts only when it is 1
            }));
  EXPECT_EQ(std::string(kHeaderStart) + "P^FS\r\n^XA^H(E^XZ\r\n", file_.Read());
  EXPECT_EQ(TVMGR_OK, Backup(ChooseAll));
  EXPECT_TRUE(file_.Read().starts_with(std::string(kHeaderStart) + "SITFBCP^FS\r\n"));
}

TEST_F(BackupTest, EveryPieceIsOneOpenSeekWriteClose) {
  Backup([](TvmgrBackupInfo& info) { info.section_c = 1; });
  using enum EFileCall;
  EXPECT_EQ((std::vector<EFileCall>{kFullPath, kCreate, kClose, kOpen, kSeek, kWrite, kClose, kOpen, kSeek,
                                    kWrite, kClose}),
            world_.file_calls);
}

TEST_F(BackupTest, APieceOfWhichAnyFileCallFailsIsNotThereAtAll) {
  const std::string header = std::string(kHeaderStart) + "C^FS\r\n";
  for (std::size_t nth = 1; nth <= 11;
       ++nth) {  // path, create; then open, seek, write, close of header and trailer
    file_.Write("of old");
    world_.ClearLog();
    world_.fail_file_call = nth;
    EXPECT_EQ(TVMGR_FILE_ERROR, Backup([](TvmgrBackupInfo& info) { info.section_c = 1; })) << nth;
    EXPECT_EQ(nth < 3 ? "of old" : nth < 4 ? "" : nth < 8 ? kBackupTrailer : header, file_.Read()) << nth;
  }
}

/** How a process ends that is ended from outside: no destructor runs, nothing is closed. */
[[noreturn]] void EndProcess() {
#if defined(_WIN32)
  ::TerminateProcess(reinterpret_cast<void*>(-1), 77);  // this one
#endif
  std::_Exit(77);
}

TEST_F(BackupTest, AProcessEndedAfterAnyFileCallLeavesWholePiecesOfWhichACheckSaysWhatIsMissing) {
  world_.printer.PutFile("E:A.PNG", "a");
  world_.printer.PutFile("E:B.ZPL", "^FDb^FS");
  LoadAll();
  // A name that the processes that die have in common; they come from a copy of this test.
  const std::filesystem::path path = std::filesystem::current_path() / "killed.bak";
  const WideString text = path.string<TvmgrChar>();
  const TvmgrBackupInfo info{text.c_str(), 1, 1, 1, 1, 1, 1, 1};
  TVMGR_UpdateBackupInfo(&info);
  const auto read = [&path] {
    std::ifstream file(path, std::ios::binary);
    return std::string{std::istreambuf_iterator<char>(file), {}};
  };
  const auto backup_until = [this](std::size_t calls) {
    world_.ClearLog();
    world_.before_file_call = [this, calls] { world_.file_calls.size() > calls ? EndProcess() : void(); };
    TVMGR_Backup(0);
    EndProcess();
  };
  ASSERT_EQ(TVMGR_OK, TVMGR_Backup(0));
  const std::string whole = read();
  ASSERT_TRUE(tvmgr::ParseBackup(whole).IsComplete());
  const std::size_t calls = world_.file_calls.size();
  std::set<std::string> states;
  for (std::size_t done = 0; done <= calls; ++done) {
    std::filesystem::remove(path);
    EXPECT_EXIT(backup_until(done), ::testing::ExitedWithCode(77), "") << done;
    const std::string left = read();
    ASSERT_TRUE(whole.starts_with(left)) << left;
    const std::string_view rest = std::string_view(whole).substr(left.size());
    EXPECT_TRUE(rest.empty() || left.empty() || rest.starts_with("^FX^FS\r\n") || rest == kBackupTrailer)
        << rest;
    const tvmgr::tagBackupContents contents = tvmgr::ParseBackup(left);
    EXPECT_EQ(rest.empty(), contents.IsComplete() && contents.problems.empty()) << left;
    states.insert(left);
  }
  EXPECT_EQ(6U, states.size());  // nothing, the header, the settings, two files, all
  std::filesystem::remove(path);
}

TEST_F(BackupTest, BadRequestsFailAsDocumented) {
  TvmgrBackupInfo info{};
  info.settings = 1;
  TVMGR_UpdateBackupInfo(&info);
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_Backup(1));
  EXPECT_TRUE(world_.calls.empty());
  file_.Write("old contents");
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, Backup([](TvmgrBackupInfo&) {}));
  EXPECT_EQ("", file_.Read());
  const WideString nowhere = file_.Path() + Wide("/no/such/folder/file");
  info.path = nowhere.c_str();
  TVMGR_UpdateBackupInfo(&info);
  EXPECT_EQ(TVMGR_FILE_ERROR, TVMGR_Backup(0));
}

TEST_F(BackupTest, OnlyAReloadFlagOfOneReloads) {
  world_.port.Faults().call_faults = {{lxemu::PortCall::kInitialize, 2, 99, 0}};
  file_.Write("old contents");
  const auto choose = [](TvmgrBackupInfo& info) { info.section_c = 1; };
  EXPECT_EQ(99, Backup(choose, 1));
  EXPECT_EQ("old contents", file_.Read());
  EXPECT_EQ(TVMGR_OK, Backup(choose, 2));
  EXPECT_EQ(TVMGR_OK, Backup(choose, 0));
  world_.ClearLog();
  EXPECT_EQ(TVMGR_OK, Backup(choose, 1));
  EXPECT_FALSE(world_.Sent().empty());
}

TEST(BackupFormatTest, TheSettingsBlockKeepsItsOrderAndNamesSettingsWithoutAValue) {
  const auto block_with = [](const std::map<std::uint32_t, std::string>& values) {
    CSettingStore store;
    for (const auto& [id, value] : values) {
      store.PutValue(id, value);
    }
    return FormatSettingsBlock(store);
  };
  const std::string block =
      block_with({{6, "six"}, {77, "seventy-seven"}, {3, "300"}, {4, ""}, {1, "not backed up"}});
  EXPECT_TRUE(block.starts_with("^FX^FS\r\n^XA^S(CLM,P,six^XZ\r\n^XA^S(CLM,S,^XZ\r\n^XA^S(CLM,D,^XZ\r\n"));
  EXPECT_NE(std::string::npos,
            block.find("^XA^S(CLA,C,seventy-seven^XZ\r\n^XA^S(CLR,Z,300^XZ\r\n^XA^S(CLR,P,^XZ\r\n"));
  EXPECT_EQ(std::string::npos, block.find("not backed up"));

  std::map<std::uint32_t, std::string> ids;
  for (std::uint32_t id = 1; id < 100; ++id) {
    ids[id] = id < 65 || id > 67 ? "#" + std::to_string(id) : "";  // no prefix characters
  }
  std::string order;
  const std::string numbered = block_with(ids);
  for (std::size_t at = numbered.find('#'); at != std::string::npos; at = numbered.find('#', at + 1)) {
    order += numbered.substr(at + 1, numbered.find('^', at) - at - 1) + " ";
  }
  EXPECT_EQ(
      "6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 25 26 27 28 29 35 36 38 39 40 41 42 43 44 45 47 "
      "48 49 50 51 52 53 54 55 56 57 77 3 4 5 76 78 79 80 82 83 ",
      order);
  EXPECT_TRUE(numbered.ends_with("#83^XZ\r\n^XA^JUS^XZ\r\n"));
}

TEST(BackupFormatTest, ThePrefixChangeNeedsAllThreeCharacters) {
  const std::string change = "\x02\036CT!\036CC^\036CD;\x03^XA^JUS^XZ\r\n";
  CSettingStore store;
  store.PutValue(65, " 0x121");  // as "%x" reads it; the low byte counts
  store.PutValue(66, "5Exyz");
  EXPECT_EQ(std::string::npos, FormatSettingsBlock(store).find('\x02'));
  store.PutValue(67, "3b");
  EXPECT_TRUE(FormatSettingsBlock(store).ends_with(change));
  for (const char* low_byte_3b : {"1FFFFFFFF3B", "123456789ABCDEF0123b,", "\t\n+0X3B", "-C5", "3b "}) {
    store.PutValue(67, low_byte_3b);
    EXPECT_TRUE(FormatSettingsBlock(store).ends_with(change)) << low_byte_3b;
  }
  for (const char* zero : {"nothing", "", "0x", "100", "FFFFFFFFFFFFFFFF00", "+-3b", " , 3b"}) {
    store.PutValue(67, zero);
    EXPECT_EQ(std::string::npos, FormatSettingsBlock(store).find('\x02')) << zero;
  }
}

TEST_F(BackupTest, FilesAreFramedByTheirAttributeAndEmptyOnesLeaveASeparator) {
  world_.printer.PutFile("E:B.PNG", "png bytes", true);
  world_.printer.PutFile("E:A.GRF", "grf", false);
  world_.printer.PutFile("E:L.ZPL", "^FDlabel^FS", false);
  world_.printer.PutFile("E:GONE.TTE", "font", false);
  LoadAll();
  world_.printer.Execute("^XA^IDE:GONE.TTE^XZ");
  const std::string png = world_.printer.Execute("^XA^H(YE:B.PNG^XZ");
  const std::string grf = world_.printer.Execute("^XA^H(YE:A.GRF^XZ");
  const std::string zpl = world_.printer.Execute("^XA^HFE:L.ZPL^XZ");
  EXPECT_EQ(TVMGR_OK, Backup([](TvmgrBackupInfo& info) {
              info.section_i = info.section_t = info.section_f = info.section_b = 1;
            }));
  EXPECT_EQ(std::string(kHeaderStart) + "ITFB^FS\r\n" +                                                     //
                "^FX^FS\r\n^XA^F(AE:B.PNG,N^XZ\r\n" + png + "\r\n^XA^F(AE:B.PNG,Y^XZ\r\n" +                 //
                "^FX^FS\r\n^XA^F(AE:A.GRF,N^XZ\r\n" + grf + "\r\n^XA^F(AE:A.GRF,N^XZ\r\n" +                 //
                "^FX^FS\r\n^XA^F(AE:L.ZPL,N^XZ\r\n" + zpl + "\r\n^XA^F(AE:L.ZPL,N^XZ\r\n" + "^FX^FS\r\n" +  //
                "^XA^H(E^XZ\r\n",
            file_.Read());
}

TEST_F(BackupTest, AnEntryWithoutANameIsPassedOver) {
  world_.printer.PutFile("E:A.PNG", "a");
  for (const std::string name : {"", " B.PNG", "A.PNG"}) {
    world_.scripted_answer = "* E:" + name + std::string(28 - name.size(), ' ') + "\r\n";
    LoadAll();
    world_.scripted_answer = std::nullopt;
    EXPECT_EQ(TVMGR_OK, Backup([](TvmgrBackupInfo& info) { info.section_f = 1; })) << name;
    EXPECT_EQ(name == "A.PNG", file_.Read().find("^FX^FS\r\n") != std::string::npos) << name;
    EXPECT_EQ(name == "A.PNG" ? 2U : 0U, world_.Sent().size()) << name;  // one for each of the two lists
  }
}

TEST_F(BackupTest, AFetchThatFailsLeavesTheFinishedPiecesAndTheTrailer) {
  world_.printer.PutFile("E:A.PNG", "a");
  world_.printer.PutFile("E:B.PNG", "b");
  LoadAll();
  world_.port.Faults().call_faults = {{lxemu::PortCall::kSendData, 2, 55, 0}};
  EXPECT_EQ(55, Backup([](TvmgrBackupInfo& info) { info.section_i = 1; }));
  const std::string contents = file_.Read();
  EXPECT_NE(std::string::npos, contents.find("^XA^F(AE:A.PNG,N^XZ\r\n^XA^H(E^XZ\r\n"));
  EXPECT_EQ(std::string::npos, contents.find("B.PNG"));
}

TEST_F(BackupTest, AFilePastOneGibibyteTakesNothingMoreButTheTrailer) {
  constexpr std::uint64_t kGibibyte = 0x40000000;
  world_.printer.PutFile("E:A.PNG", "a");
  LoadAll();
  for (const std::uint64_t size : {kGibibyte, kGibibyte + 1}) {
    world_.before_send = [this, size] {  // grows while the printer is asked for the next file; sparse
      std::filesystem::resize_file(std::filesystem::path(file_.Path()), size);
    };
    EXPECT_EQ(size > kGibibyte ? TVMGR_FILE_TOO_LARGE : TVMGR_OK,
              Backup([](TvmgrBackupInfo& info) { info.section_i = 1; }));
    const std::uint64_t added = std::filesystem::file_size(std::filesystem::path(file_.Path())) - size;
    EXPECT_EQ(size > kGibibyte, added == kBackupTrailer.size()) << added;
    world_.before_send = nullptr;
  }
}

TEST_F(BackupTest, GoesToTheFileThatItsPathMeantAtTheStartWhateverTheCurrentDirectory) {
  const std::filesystem::path path(file_.Path());
  const std::filesystem::path before = std::filesystem::current_path();
  const WideString relative = path.filename().string<TvmgrChar>();
  TvmgrBackupInfo info{};
  info.path = relative.c_str();
  info.section_c = 1;
  TVMGR_UpdateBackupInfo(&info);
  std::filesystem::current_path(path.parent_path());
  world_.before_send = [&] { std::filesystem::current_path(before); };  // while the printer is loaded
  EXPECT_EQ(TVMGR_OK, TVMGR_Backup(1));
  EXPECT_TRUE(file_.Read().ends_with(kBackupTrailer));
  EXPECT_FALSE(std::filesystem::exists(before / path.filename()));
  world_.before_send = nullptr;
}

/** Everything of a printer that a backup carries. */
std::string Describe(const lxemu::CPrinter& printer, const std::vector<std::string>& files) {
  std::string text;
  for (const char* key :
       {"CMP,F", "CLM,P", "CLR,Z", "CLR,P", "CLR,R", "CMP,U", "CBB,M", "INU,P", "CCC,T", "CCC,D"}) {
    text += std::string(key) + "=" + printer.Setting(key) + "\n";
  }
  for (const std::string& file : files) {
    text += file + "=" + printer.File(file).value_or("(none)") + (printer.IsProtected(file) ? " P\n" : "\n");
  }
  return text;
}

TEST_F(BackupTest, ARestoredPrinterEqualsTheOneThatWasBackedUp) {
  std::string every_byte;
  for (int i = 0; i < 1000; ++i) {
    every_byte.push_back(static_cast<char>(i));
  }
  const std::vector<std::string> files{"E:LOGO.PNG",  "E:KEEP.GRF", "E:FONT.TTF",   "E:FONT2.TTE",
                                       "E:LABEL.ZPL", "E:FORM.FMT", "E:KORVDEF.BGD"};
  bool marked = false;
  for (const std::string& file : files) {
    const bool is_format = file.ends_with("ZPL") || file.ends_with("FMT");
    world_.printer.PutFile(file, is_format ? "^FO1,1^FD" + file + "^FS" : every_byte + file,
                           marked = !marked);
  }
  world_.printer.SetSetting("CMP,F", "changed");
  world_.printer.SetSetting("CLM,P", "77");
  world_.printer.SetSetting("CBB,M", "1");
  world_.printer.SetSetting("INU,P", "name");
  ASSERT_EQ(TVMGR_OK, TVMGR_UpdatePrefix('!', '^', ';'));
  const std::string before = Describe(world_.printer, files);
  ASSERT_EQ(TVMGR_OK, Backup(ChooseAll, 1));
  world_.printer.FactoryReset();
  ASSERT_NE(before, Describe(world_.printer, files));
  EXPECT_EQ(TVMGR_OK, TVMGR_Restore(file_.Path().c_str()));
  EXPECT_EQ(before, Describe(world_.printer, files));
  world_.printer.PowerCycle();
  EXPECT_EQ(before, Describe(world_.printer, files));  // saved, not only set
}

using RestoreTest = BackupTest;

TEST_F(RestoreTest, SendsTheFileAsItIsThenTheModeThenLoads) {
  file_.Write("any bytes at all^XA^H(E^XZ");
  EXPECT_EQ(TVMGR_OK, TVMGR_Restore(file_.Path().c_str()));
  const std::vector<std::string> sent = world_.Sent();
  ASSERT_LE(6U, sent.size());
  EXPECT_EQ("~H(CLR,Z~H(CLR,P~H(CLR,R~H(CMP,U", sent[0]);
  EXPECT_EQ("any bytes at all^XA^H(E^XZ", sent[1]);
  EXPECT_EQ("^XA^S(CMP,U,D^XZ^XA^JUS^XZ^XA^H(E^XZ", sent[2]);
  EXPECT_EQ("~H(CLR,Z~H(CLR,P~H(CLR,R~H(CMP,U", sent[3]);  // the snapshot was dropped
  EXPECT_EQ(76U * 8, sent[4].size());
  file_.Write("x");
  world_.ClearLog();
  EXPECT_EQ(TVMGR_OK, TVMGR_Restore(file_.Path().c_str()));
  EXPECT_EQ("x", world_.Sent().at(0));
}

TEST_F(RestoreTest, FilesThatCannotBeReadSendNothing) {
  file_.Write("");
  EXPECT_EQ(TVMGR_OK, TVMGR_Restore(file_.Path().c_str()));
  EXPECT_EQ(TVMGR_FILE_ERROR, TVMGR_Restore((file_.Path() + Wide(".missing")).c_str()));
  EXPECT_EQ(TVMGR_FILE_ERROR, TVMGR_Restore(nullptr));
  file_.Write("contents");
  for (const std::size_t call : {3U, 4U}) {  // the size, the bytes
    world_.ClearLog();
    world_.fail_file_call = call;
    EXPECT_EQ(TVMGR_FILE_READ_ERROR, TVMGR_Restore(file_.Path().c_str()));
  }
  world_.fail_file_call = 0;
  world_.files_end_early = true;
  EXPECT_EQ(TVMGR_FILE_READ_ERROR, TVMGR_Restore(file_.Path().c_str()));
  EXPECT_TRUE(world_.calls.empty());
}

TEST_F(RestoreTest, ASendThatFailsPutsTheResolutionsBack) {
  world_.printer.SetSetting("CLR,Z", "300");
  file_.Write("stream");
  world_.port.Faults().call_faults = {{lxemu::PortCall::kSendData, 3, 61, 0}};
  EXPECT_EQ(61, TVMGR_Restore(file_.Path().c_str()));
  EXPECT_EQ(4U, world_.Sent().size() + 1);  // capture, neutralise, (failed), put back
  EXPECT_EQ("300", world_.printer.Setting("CLR,Z"));
}

TEST_F(RestoreTest, ASilentPrinterEndsTheWaitWithoutAnError) {
  LoadAll();
  file_.Write("stream");
  world_.port.Faults().silent = true;
  const std::uint64_t start = world_.clock.Now();
  EXPECT_EQ(TVMGR_OK, TVMGR_Restore(file_.Path().c_str()));
  // The stream, the mode, then the load: capture, settings, eight lists, resolutions; all in vain.
  EXPECT_EQ(60000U + 1000 + 60000 + (1 + 1 + 8 + 1) * 60000U, world_.clock.Now() - start);
}

TEST(RestoreTimeoutTest, GrowsWithTheFileOnANetworkPortOnly) {
  constexpr std::uint64_t kStep = 20971520;
  const std::tuple<std::int32_t, std::uint64_t, std::uint32_t> cases[] = {
      {1, 1, 60000},           {1, kStep * 500, 60000},      {2, 1, 60000},
      {2, kStep, 60000},       {2, kStep + 1, 120000},       {2, kStep * 2 - 1, 120000},
      {2, kStep * 2, 180000},  {2, kStep * 48 + 1, 2940000}, {2, std::uint64_t{1} << 30, 3000000},
      {2, 0xFFFFFFF0, 3000000}};
  for (const auto& [type, size, expected] : cases) {
    EXPECT_EQ(expected, RestoreTimeout(type, size)) << type << " " << size;
  }
}

}  // namespace
}  // namespace tavira::test
