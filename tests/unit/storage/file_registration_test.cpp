#include "storage/file_registration.h"

#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

using FileRegistrationTest = CTransactionTest;

TEST(DownloadNameTest, IsReadFromTheDownloadCommand) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"~DYE:LOGO.PNG,B,P,3,0,:B64:TWFu:", "LOGO.PNG"},
      {"~DYLOGO.PNG,B,P,3,0,x", "LOGO.PNG"},
      {"~DYR:LOGO,B,P,3,0,x", "LOGO.PNG"},
      {"~DYE:LOGO,B,G,3,0,x", "LOGO.GRF"},
      {"~DYE:LOGO,B,T,3,0,x", "LOGO.TTF"},
      {"~DYE:LOGO,B,E,3,0,x", "LOGO.TTE"},
      {"~DYE:LOGO,B,X,3,0,x", "LOGO"},
      {"~DYE:LOGO,B,PNG,3,0,x", "LOGO"},
      {"~DYE:LOGO.BMP,B,P,3,0,x", "LOGO.BMP"},
      {"~DY E:LOGO.PNG ,B,P,3,0,x", "LOGO.PNG"},
      {"\r\n~DYE:LOGO.PNG,B,P,3,0,x", "LOGO.PNG"},
      {"^XA^DFE:LABEL.ZPL^FS^XZ", "LABEL.ZPL"},
      {"^XA^DFLABEL.ZPL,1^FS^XZ", "LABEL.ZPL"},
      {"^XA^DFE:LABEL.FMT", "LABEL.FMT"},
      {"^XA^DFE:LABEL.ZPL^FS^FD~DYE:A.PNG,B,P,1,0,^XZ", "LABEL.ZPL"},
      {"~DYE:A.PNG,A,P,1,0,^DFE:B.ZPL^FS", "A.PNG"},
      {"~DYE:,B,P,3,0,x", ""},
      {"~DY,B,P,3,0,x", ""},
      {"^XA^DFE:^FS^XZ", ""},
      {"^XA^DF^FS^XZ", ""},
      {"LOGO.PNG", ""},
      {"~dyE:LOGO.PNG,B,P,3,0,x", ""},
      {"", ""},
  };
  for (const auto& [command, name] : cases) {
    EXPECT_EQ(name, FindDownloadName(command)) << command;
  }
  const CLeadBytes japanese([](unsigned char byte) { return byte == 0x83; });
  EXPECT_EQ("\x83,\x83^.PNG", FindDownloadName("\x83~DYX,~DYE:\x83,\x83^,B,P,3,0,x", japanese));
  EXPECT_EQ("\x83,\x83^.ZPL", FindDownloadName("\x83^DFX^^DFE:\x83,\x83^.ZPL^FS", japanese));
}

struct tagRegistration {
  std::uint32_t kind;
  std::string command;
  const char* file;
  Transactions listings;
};

const Transactions kFormatListings{Listing("E:*.FMT,c"), Listing("E:*.ZPL,c")};
const Transactions kFontListings{Listing("E:*.TTF,c"), Listing("E:*.TTE,c")};

std::string Upload(const std::string& name, char extension) {
  return "~DYE:" + name + ",B," + extension + ",3,0,:B64:TWFu:";
}

TEST_F(FileRegistrationTest, SendsTheFileAndFindsItInTheListsOfItsKind) {
  const tagRegistration cases[] = {
      {0x1001000, Upload("A.PNG", 'P'), "E:A.PNG", {Listing("E:*.PNG,c")}},
      {0x1001000, Upload("B", 'P'), "E:B.PNG", {Listing("E:*.PNG,c")}},
      {0x1001000, Upload("A.GRF", 'G'), "E:A.GRF", {Listing("E:*.GRF,c")}},
      {0x1001000, Upload("B.grf", 'G'), "E:B.GRF", {Listing("E:*.GRF,c")}},
      {0x1001000, Upload("C", 'G'), "E:C.GRF", {Listing("E:*.GRF,c")}},
      {0x1001003, Upload("A.TTF", 'T'), "E:A.TTF", kFontListings},
      {0x1001003, Upload("A.TTE", 'E'), "E:A.TTE", kFontListings},
      {0x1001008, Upload("KORVDEF.BGD", 'B'), "E:KORVDEF.BGD", {Listing("E:KORVDEF.BGD")}},
      {0x1001001, "^XA^DFE:A.ZPL^FS^FDx^FS^XZ", "E:A.ZPL", kFormatListings},
      {0x1001001, "^XA^DFE:A.FMT^FS^FDx^FS^XZ", "E:A.FMT", kFormatListings},
  };
  for (const auto& [kind, command, file, listings] : cases) {
    world_.ClearLog();
    SetRequest(kind, command);
    const std::uint64_t start = world_.clock.Now();
    EXPECT_EQ(TVMGR_OK, TVMGR_RegistData()) << command;
    Transactions expected{command + kClosing};
    expected.insert(expected.end(), listings.begin(), listings.end());
    EXPECT_EQ(expected, world_.Sent());
    EXPECT_EQ(100U + 500 + listings.size() * 100, world_.clock.Now() - start);
    EXPECT_TRUE(world_.printer.File(file)) << file;
  }
}

TEST_F(FileRegistrationTest, WhatAFetchBroughtRegistersTheSameFileAgain) {
  std::string bytes;
  for (int i = 0; i < 600; ++i) {
    bytes += static_cast<char>(i * 11);
  }
  for (const bool compressed : {false, true}) {
    world_.printer.Quirks().compressed_downloads = compressed;
    world_.printer.PutFile("E:LOGO.PNG", bytes);
    const std::string download = world_.printer.Execute("^XA^H(YE:LOGO.PNG^XZ");
    world_.printer.FactoryReset();
    SetRequest(TVMGR_REQUEST_REGISTER_GRAPHIC, download);
    EXPECT_EQ(TVMGR_OK, TVMGR_RegistData());
    EXPECT_EQ(bytes, world_.printer.File("E:LOGO.PNG"));
  }
}

TEST_F(FileRegistrationTest, OnlyAFormatIsFollowedByTheSecondaryData) {
  for (const std::uint32_t kind : {0x1001000U, 0x1001001U, 0x1001003U, 0x1001008U}) {
    world_.ClearLog();
    SetRequest(kind, Upload("A.PNG", 'P'), "second");
    TVMGR_RegistData();
    EXPECT_EQ(Upload("A.PNG", 'P') + (kind == 0x1001001 ? "second" : "") + kClosing, world_.Sent().at(0));
  }
}

TEST_F(FileRegistrationTest, WhatCannotBeRegisteredIsNotSent) {
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_RegistData());  // no request yet
  for (const std::uint32_t kind :
       {0U, 0x1001002U, 0x1001004U, 0x1001005U, 0x1001006U, 0x1001007U, 0x1001009U}) {
    SetRequest(kind, Upload("A.PNG", 'P'));
    EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_RegistData()) << std::hex << kind;
  }
  for (const std::string_view primary : {"", "A.PNG", "^XA^FDno name^XZ", "~DYE:,B,P,3,0,x"}) {
    SetRequest(TVMGR_REQUEST_REGISTER_GRAPHIC, primary, Upload("A.PNG", 'P'));
    EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_RegistData()) << primary;
  }
  EXPECT_TRUE(world_.calls.empty());
}

TEST_F(FileRegistrationTest, AFileThatIsNotListedTakesTenPasses) {
  world_.printer.Quirks().device_capacity = 0;
  const tagRegistration cases[] = {{0x1001000, Upload("A.PNG", 'P'), "", {Listing("E:*.PNG,c")}},
                                   {0x1001003, Upload("A.TTF", 'T'), "", kFontListings},
                                   {0x1001008, Upload("KORVDEF.BGD", 'B'), "", {Listing("E:KORVDEF.BGD")}}};
  for (const auto& [kind, command, file, listings] : cases) {
    world_.ClearLog();
    SetRequest(kind, command);
    const std::uint64_t start = world_.clock.Now();
    EXPECT_EQ(TVMGR_NOT_CONFIRMED, TVMGR_RegistData()) << command;
    EXPECT_EQ(1 + 10 * listings.size(), world_.Sent().size());
    EXPECT_EQ(100U + 10 * (500 + listings.size() * 100), world_.clock.Now() - start);
  }
}

TEST_F(FileRegistrationTest, AFormatCountsAsStoredWhateverTheListingSays) {
  world_.printer.Quirks().device_capacity = 0;
  SetRequest(TVMGR_REQUEST_REGISTER_FORMAT, "^XA^DFE:A.ZPL^FS^FDx^FS^XZ");
  EXPECT_EQ(TVMGR_OK, TVMGR_RegistData());
  EXPECT_FALSE(world_.printer.File("E:A.ZPL"));
  EXPECT_EQ(1U + 2, world_.Sent().size());
}

TEST_F(FileRegistrationTest, ThePassesEndAsSoonAsTheFileIsListed) {
  world_.printer.Quirks().device_capacity = 0;
  world_.before_send = [&] {
    if (world_.Sent().size() == 1 + 4) {
      world_.printer.PutFile("E:a.png", "late");  // letter case does not matter
    }
  };
  SetRequest(TVMGR_REQUEST_REGISTER_GRAPHIC, Upload("A.PNG", 'P'));
  EXPECT_EQ(TVMGR_OK, TVMGR_RegistData());
  EXPECT_EQ(1U + 5, world_.Sent().size());
}

TEST_F(FileRegistrationTest, ANetworkPortGetsAMinuteMoreForEachTwentyMebibytes) {
  constexpr std::size_t kTwentyMebibytes = 20U << 20;
  const struct {
    bool is_network;
    std::size_t size;
    std::uint64_t timeout_ms;
  } cases[] = {{false, 100, 60000},
               {false, kTwentyMebibytes + 100, 60000},
               {true, 100, 120000},
               {true, kTwentyMebibytes - 100, 120000},
               {true, kTwentyMebibytes + 100, 180000}};
  for (const auto& [is_network, size, timeout_ms] : cases) {
    is_network ? SelectNetwork() : SelectUsb();
    std::string format = "^XA^DFE:BIG.ZPL^FS^XZ";
    format.resize(size, ' ');
    SetRequest(TVMGR_REQUEST_REGISTER_FORMAT, format);
    std::vector<std::uint64_t> sends;
    world_.before_send = [&] { sends.push_back(world_.clock.Now()); };
    world_.port.Faults().silent = true;
    EXPECT_EQ(TVMGR_OK, TVMGR_RegistData());
    ASSERT_EQ(3U, sends.size());
    EXPECT_EQ(timeout_ms + 500, sends[1] - sends[0]) << size;
    EXPECT_EQ(60000U, sends[2] - sends[1]) << size;
  }
}

}  // namespace
}  // namespace tavira::test
