#include <gmock/gmock.h>
#include <windows.h>

#include "cli_fixture.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class CChoiceTest : public CCliTest {
 protected:
  void SetUp() override {
    CCliTest::SetUp();
    SetEnvironmentVariableW(L"TVMGR_DEVICE", nullptr);
  }
};

TEST_F(CChoiceTest, UseTellsPortsAddressesAndDevicesApartAndAsksThePrinterOnce) {
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"USB001"}, "port"},
      {{"IP_192.0.2.7"}, "port"},
      {{"192.0.2.7"}, "address"},
      {{"usbprinter"}, "address"},
      {{"\\\\?\\usb#vid_1a2b"}, "device"},
      {{"12", "--as", "address"}, "address"},
  };
  // No address is connected to: the opening fails before.
  WriteIni("[faults]\nfail=Initialize:1:-1011\n");
  for (const auto& [arguments, kind] : cases) {
    std::vector<std::string> use = {"use"};
    use.insert(use.end(), arguments.begin(), arguments.end());
    const json chosen = Json(use);
    EXPECT_EQ(chosen["printer"]["kind"], kind) << arguments.front();
    EXPECT_EQ(chosen["printer"]["value"], arguments.front());
    EXPECT_EQ(chosen["answers"], false);
  }
  EXPECT_EQ(Json({"use"})["answers"], nullptr) << "not asked";
  EXPECT_EQ(Tvmgr({"use"}).out, "address 12\n");
  WriteIni("[faults]\nsilent=1\n");
  EXPECT_THAT(Tvmgr({"use", "USB001"}).err, HasSubstr("USB001 is remembered, but does not answer now"));
  WriteIni("");
  EXPECT_EQ(Json({"use", "USB001"})["answers"], true);
  EXPECT_EQ(Tvmgr({"use", "--clear"}).out, "no printer is remembered\n");
  EXPECT_TRUE(Json({"use"})["printer"]["kind"].is_null());
}

TEST_F(CChoiceTest, RememberedPrinterIsTakenWhenNothingElseNamesOne) {
  ASSERT_EQ(Tvmgr({"use", "USB007"}).exit_code, 0U);
  const struct {
    std::vector<std::string> arguments;
    const wchar_t* variable;
    std::string chosen;
  } cases[] = {
      {{}, nullptr, "port USB007, device -, address -"},
      {{"--port", "USB001"}, nullptr, "port USB001, device -, address -"},
      {{}, L"USB002", "port USB002, device -, address -"},
      {{"--device", "usb#9"}, L"USB002", "device usb#9, address -"},
  };
  for (const auto& choice : cases) {
    SetEnvironmentVariableW(L"TVMGR_PORT", choice.variable);
    std::vector<std::string> arguments = choice.arguments;
    arguments.insert(arguments.end(), {"status", "--verbose"});
    const tagRun run = Tvmgr(arguments);
    EXPECT_EQ(run.exit_code, 0U) << run.err;
    EXPECT_THAT(run.err, HasSubstr(choice.chosen));
  }
  EXPECT_THAT(Tvmgr({"use"}).err, HasSubstr("in force is the printer on USB002"));
  SetEnvironmentVariableW(L"TVMGR_PORT", nullptr);
  const json info = Json({"info"});
  EXPECT_EQ(info["port"], "USB007");
  EXPECT_EQ(info["status_name"], "idle");
  EXPECT_EQ(info["settings"]["IMP,S"], "LX-R4100");
}

TEST_F(CChoiceTest, APortBehindWhichNoPrinterIsKnownIsRemarkedOn) {
  // A port of the spooler that is known; nobody listens there.
  const std::wstring known = L"IP_tvmgr_test_" + std::to_wstring(GetCurrentProcessId());
  const std::wstring key =
      L"SYSTEM\\CurrentControlSet\\Control\\Print\\Monitors\\Standard TCP/IP Port\\Ports\\" + known;
  constexpr wchar_t kAddress[] = L"127.0.0.1:9";
  ASSERT_EQ(ERROR_SUCCESS, RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"IPAddress", REG_SZ, kAddress,
                                           sizeof kAddress));
  const std::string known_port(known.begin(), known.end());
  const struct {
    std::vector<std::string> options;
    bool is_remarked_on;
    unsigned exit_code;
  } cases[] = {
      {{"--port", "USB001"}, true, 0},
      {{"--port", "WSD-1"}, true, 0},
      {{"--port", "USB001", "--quiet"}, false, 0},
      {{"--device", "usb#9"}, false, 0},
      {{"--port", known_port}, false, 4},
  };
  for (const auto& [options, is_remarked_on, exit_code] : cases) {
    std::vector<std::string> arguments = options;
    arguments.emplace_back("status");
    const tagRun run = Tvmgr(arguments);
    EXPECT_EQ(is_remarked_on,
              run.err.find("no printer is known behind port " + options[1]) != std::string::npos)
        << run.err;
    EXPECT_EQ(exit_code, run.exit_code) << run.err;
  }
  EXPECT_EQ(ERROR_SUCCESS, RegDeleteTreeW(HKEY_LOCAL_MACHINE, key.c_str()));
}

TEST_F(CChoiceTest, DamagedMemoryStopsCommandsInsteadOfChoosingAnotherPrinter) {
  for (const char* const damaged : {R"({"chosen":{"kind":"fax","value":"1"},"found":[]})",
                                    R"({"of":"others"})", R"({"found":{}})", "[]"}) {
    HostFile("choice.json", damaged);
    const tagRun run = Tvmgr({"status"});
    EXPECT_EQ(run.exit_code, 5U) << damaged;
    EXPECT_THAT(run.err, HasSubstr("use --clear"));
  }
  EXPECT_EQ(Log(), "");
  EXPECT_EQ(Tvmgr({"--port", "USB001", "status"}).exit_code, 0U);
  EXPECT_EQ(Tvmgr({"codes"}).exit_code, 0U);
  EXPECT_EQ(Tvmgr({"use", "--clear"}).exit_code, 0U);
  EXPECT_EQ(Tvmgr({"status"}).exit_code, 0U);
}

TEST_F(CChoiceTest, InfoOfASilentPrinterFailsButShowsTheChoice) {
  WriteIni("[faults]\nsilent=1\n");
  const tagRun run = Tvmgr({"--port", "USB001", "info"});
  EXPECT_EQ(run.exit_code, 4U);
  EXPECT_THAT(run.out, HasSubstr("port     USB001\n"));
  EXPECT_THAT(run.out, HasSubstr("status   unknown"));
}

TEST_F(CChoiceTest, WhatAPrinterCallsItselfMovesNoCursor) {
  HostFile("choice.json",
           R"({"chosen":{"kind":"address","value":"no\u001b[2Jhost","name":"Do\r\u0007ck"},"found":[]})");
  EXPECT_EQ(Tvmgr({"use"}).out, "address no\\x1B[2Jhost  (Do\\x0D\\x07ck)\n");
  for (const char* const command : {"status", "info"}) {
    const tagRun run = Tvmgr({command});
    EXPECT_THAT(run.err, HasSubstr("no\\x1B[2Jhost"));
    EXPECT_EQ((run.out + run.err).find('\x1B'), std::string::npos);
  }
}

TEST_F(CChoiceTest, SearchReplacesTheNumbersAndKeepsTheChoice) {
  HostFile("choice.json", R"({"chosen":{"kind":"port","value":"USB001"},
      "found":[{"kind":"address","value":"192.0.2.7","name":"Dock"}, {"kind":"device","value":"\\\\?\\usb#1"}]})");
  WriteIni("[faults]\nfail=Initialize:1:-1011\n");
  EXPECT_EQ(Json({"use", "1"})["printer"],
            json::parse(R"({"kind":"address","value":"192.0.2.7","name":"Dock"})"));
  EXPECT_EQ(Json({"use", "2"})["printer"]["kind"], "device");
  EXPECT_EQ(Tvmgr({"use", "USB001"}).exit_code, 0U);
  // No printer hangs on this machine.
  EXPECT_EQ(Json({"search", "usb"})["printers"], json::array());
  EXPECT_EQ(Tvmgr({"use", "1"}).exit_code, 2U);
  EXPECT_EQ(Json({"use"})["printer"]["value"], "USB001");
}

}  // namespace
