// Loads Ferrolink.dll as a host does and uses its six entry points. The printer's memory lives in a folder of
// the test; the tests that look at what survives start this program again with an argument.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

namespace {

namespace fs = std::filesystem;

struct tagDescription {
  std::int32_t port_type = 1;
  const wchar_t* strings[3] = {L"USB001", nullptr, L""};
  char data[16] = {'^', 'F', 'X', '^', 'F', 'S'};
  std::int32_t data_used = 6;
};
static_assert(sizeof(tagDescription) == 56);

class CHost {
 public:
  CHost() : library_(LoadLibraryW(L"Ferrolink.dll")) {
    Find(initialize_, "Initialize");
    Find(terminate_, "Terminate");
    Find(send_, "SendData");
    Find(receive_, "ReceiveData");
    Find(clear_, "ClearReceiveData");
    Find(index_, "GetPortComIndex");
  }

  // Unloading closes the log, so that the folder can be removed.
  ~CHost() { FreeLibrary(library_); }
  CHost(const CHost&) = delete;
  CHost& operator=(const CHost&) = delete;

  bool IsComplete() const {
    return initialize_ != nullptr && terminate_ != nullptr && send_ != nullptr && receive_ != nullptr &&
           clear_ != nullptr && index_ != nullptr;
  }

  /// One exchange from opening to closing; an error code as text when a call fails.
  std::string Exchange(const std::string& commands, DWORD timeout_ms = 2000) {
    const tagDescription description;
    if (const std::int32_t code = initialize_(&description); code != 0) {
      return "Initialize " + std::to_string(code);
    }
    const std::string answer = SendAndReceive(commands, timeout_ms);
    terminate_();
    return answer;
  }

  std::int32_t SendOnClosedPort() const {
    const std::uint8_t byte = 0;
    return send_(&byte, 1);
  }
  std::int32_t ClearOnClosedPort() const { return clear_(); }
  std::int32_t PortComIndex() const { return index_(); }

 private:
  template <typename Function>
  void Find(Function& function, const char* name) {
    function = library_ == nullptr
                   ? nullptr
                   : reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library_, name)));
  }

  std::string SendAndReceive(const std::string& commands, DWORD timeout_ms) {
    const std::string frame = "\x10\x1B\x1D\x1B\x1B" + commands + "\x10\x1B\x1D\x1B\x1C";
    if (const std::int32_t code = send_(reinterpret_cast<const std::uint8_t*>(frame.data()),
                                        static_cast<std::uint32_t>(frame.size()));
        code != 0) {
      return "SendData " + std::to_string(code);
    }
    for (DWORD waited = 0; waited < timeout_ms; waited += 10) {
      std::uint32_t count = 0;
      receive_(nullptr, &count);
      if (count > 0) {
        std::string answer(count, '\0');
        receive_(reinterpret_cast<std::uint8_t*>(answer.data()), &count);
        return answer.substr(0, count);
      }
      Sleep(10);
    }
    return "";
  }

  HMODULE library_;
  std::int32_t (*initialize_)(const void*) = nullptr;
  std::int32_t (*terminate_)() = nullptr;
  std::int32_t (*send_)(const std::uint8_t*, std::uint32_t) = nullptr;
  std::int32_t (*receive_)(std::uint8_t*, std::uint32_t*) = nullptr;
  std::int32_t (*clear_)() = nullptr;
  std::int32_t (*index_)() = nullptr;
};

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
  const CHost host;
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
    std::ofstream(folder / "answer", std::ios::binary) << CHost().Exchange(ReadAll(folder / "commands"));
    return 0;
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
