// Loads Ferrolink.dll as a host does and uses its six entry points. The printer's memory lives in a folder of
// the test; the tests that look at what survives start this program again with an argument.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "ferrolink_host.h"

namespace {

using lxemu::CFerrolinkHost;

namespace fs = std::filesystem;

constexpr const char* kChange =
    "^XA^S(CLR,Z,300^XZ^XA^JUS^XZ~DYE:LOGO,B,P,5,0,bytes^XA^F(AE:LOGO.PNG,Y^XZ^XA^H(E^XZ";

std::string ReadAll(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class FerrolinkDll : public testing::Test {
 protected:
  FerrolinkDll()
      : folder_(fs::temp_directory_path() / ("ferrolink_" + std::to_string(GetCurrentProcessId()))) {
    fs::create_directories(folder_);
    SetEnvironmentVariableW(L"LXEMU_MEMORY", folder_.c_str());
    SetEnvironmentVariableW(L"LXEMU_LOG", (folder_ / L"exchange.log").c_str());
  }
  ~FerrolinkDll() override {
    std::error_code error;
    fs::remove_all(folder_, error);
  }

  /// Runs one exchange in a process of its own and returns its answer.
  std::string InNewProcess(const std::string& commands) {
    std::ofstream(folder_ / "commands", std::ios::binary) << commands;
    fs::remove(folder_ / "answer");
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring line = L"\"" + std::wstring(program) + L"\" exchange \"" + folder_.wstring() + L"\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process)) {
      return "the process did not start";
    }
    WaitForSingleObject(process.hProcess, 60'000);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return ReadAll(folder_ / "answer");
  }

  fs::path folder_;
};

TEST_F(FerrolinkDll, ExportsTheSixEntryPointsAndReportsWrongUse) {
  const CFerrolinkHost host;
  ASSERT_TRUE(host.IsComplete());
  EXPECT_EQ(host.SendOnClosedPort(), -1002);
  EXPECT_EQ(host.ClearOnClosedPort(), -1002);
  EXPECT_EQ(host.PortComIndex(), 0);
}

TEST_F(FerrolinkDll, StateSurvivesTheProcess) {
  EXPECT_EQ(InNewProcess("~H(CLR,Z"), "\x02^S(CLR,Z,600\x03\r\n");
  EXPECT_EQ(InNewProcess(kChange), "\x02LX-R4100\x03\r\n");
  EXPECT_EQ(InNewProcess("~H(CLR,Z"), "\x02^S(CLR,Z,300\x03\r\n");
  EXPECT_NE(InNewProcess("^XA^HWE:*.PNG,c^XZ").find("* E:LOGO.PNG            5P"), std::string::npos);
  EXPECT_EQ(ReadAll(folder_ / "E" / "LOGO.PNG"), "bytes");
  // A second saving replaces what is there.
  EXPECT_EQ(InNewProcess("^XA^S(CLR,Z,150^XZ^XA^JUS^XZ^XA^F(AE:LOGO.PNG,N^XZ^XA^IDE:LOGO.PNG^XZ^XA^H(E^XZ"),
            "\x02LX-R4100\x03\r\n");
  EXPECT_EQ(InNewProcess("~H(CLR,Z"), "\x02^S(CLR,Z,150\x03\r\n");
  EXPECT_FALSE(fs::exists(folder_ / "E" / "LOGO.PNG"));
  const std::string log = ReadAll(folder_ / "exchange.log");
  EXPECT_NE(log.find("# open, port type 1, \"USB001\", \"\", \"\", data ^FX^FS: 0\n"), std::string::npos);
  EXPECT_NE(log.find("~H(CLR,Z (8) -> \\x02^S(CLR,Z,150\\x03\\r\\n (16)\n"), std::string::npos);
}

TEST_F(FerrolinkDll, ReadsTheIniOfItsFolder) {
  std::ofstream(folder_ / "printer.ini")
      << "[factory]\nCLR,P=150\n[printer]\nunanswered=CLR,R\n[faults]\nfail=SendData:1:-55\n";
  EXPECT_EQ(InNewProcess("~H(CLR,P"), "SendData -55");
  std::ofstream(folder_ / "printer.ini") << "[factory]\nCLR,P=150\n[printer]\nunanswered=CLR,R\nmistake=1\n";
  EXPECT_EQ(InNewProcess("~H(CLR,P~H(CLR,R~H(CLR,Z"), "\x02^S(CLR,P,150\x03\r\n\x02^S(CLR,Z,600\x03\r\n");
  EXPECT_NE(ReadAll(folder_ / "exchange.log").find("# printer.ini: not understood in [printer]: mistake=1\n"),
            std::string::npos);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::string(argv[1]) == "exchange") {
    const fs::path folder = argv[2];
    std::ofstream(folder / "answer", std::ios::binary)
        << CFerrolinkHost().Exchange(ReadAll(folder / "commands"));
    return 0;
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
