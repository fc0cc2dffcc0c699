#include "storage/file_registration.h"

#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

// What goes over the port for plain operations: tests/unit/manager/exchange_scripts.txt.
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

TEST_F(FileRegistrationTest, ACodeOfThePortThatReadsLikeStillListedEndsADeletion) {
  world_.before_send = [this] { world_.printer.PutFile("E:A.PNG", "x"); };
  SetRequest(TVMGR_REQUEST_DELETE_GRAPHIC, "A.PNG");
  world_.port.Faults().call_faults = {{lxemu::PortCall::kInitialize, 2, TVMGR_NOT_CONFIRMED, 0}};
  EXPECT_EQ(TVMGR_NOT_CONFIRMED, TVMGR_DeleteData());
  EXPECT_EQ(1U, world_.Sent().size());
}

}  // namespace
}  // namespace tavira::test
