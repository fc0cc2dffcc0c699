// Ferrolink.dll as a host sees it, with its own printer and with printers on the network: lxemu_network runs as a process
// of its own on this machine's loopback, on ports that are free. (What it keeps from process to process: tests/cli.)
#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct tagDescription {
  std::int32_t port_type = 1;
  const wchar_t* strings[3] = {L"USB001", nullptr, L""};  // the third one: the address on the network
  char data[16] = {'^', 'F', 'X', '^', 'F', 'S'};
  std::int32_t data_used = 6;
};
static_assert(sizeof(tagDescription) == 56);

/// A host that has loaded the port library.
class CFerrolinkHost {
 public:
  CFerrolinkHost() = default;
  // Unloading closes the log, so that the folder can be removed.
  ~CFerrolinkHost() { FreeLibrary(library_); }
  CFerrolinkHost(const CFerrolinkHost&) = delete;
  CFerrolinkHost& operator=(const CFerrolinkHost&) = delete;

  /// One exchange from opening to closing; an error code as text when a call fails.
  std::string Exchange(const std::string& commands, DWORD timeout_ms = 2000,
                       const std::wstring& address = {}) {
    tagDescription description;
    description.port_type = address.empty() ? 1 : 2;
    description.strings[2] = address.c_str();
    const std::int32_t code = initialize(&description);
    const std::string answer =
        code != 0 ? "Initialize " + std::to_string(code) : SendAndReceive(commands, timeout_ms);
    terminate();
    return answer;
  }

 private:
  const HMODULE library_ = LoadLibraryW(L"Ferrolink.dll");

  template <typename Function>
  Function* Find(const char* name) const {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library_, name)));
  }

 public:
  std::int32_t (*const initialize)(const void*) = Find<std::int32_t(const void*)>("Initialize");
  std::int32_t (*const terminate)() = Find<std::int32_t()>("Terminate");
  std::int32_t (*const send)(const void*,
                             std::uint32_t) = Find<std::int32_t(const void*, std::uint32_t)>("SendData");
  std::int32_t (*const receive)(void*,
                                std::uint32_t*) = Find<std::int32_t(void*, std::uint32_t*)>("ReceiveData");
  std::int32_t (*const clear)() = Find<std::int32_t()>("ClearReceiveData");
  std::int32_t (*const index)() = Find<std::int32_t()>("GetPortComIndex");

 private:
  std::string SendAndReceive(const std::string& commands, DWORD timeout_ms) const {
    const std::string frame = "\x10\x1B\x1D\x1B\x1B" + commands + "\x10\x1B\x1D\x1B\x1C";
    std::int32_t code = send(frame.data(), static_cast<std::uint32_t>(frame.size()));
    if (code != 0) {
      return "SendData " + std::to_string(code);
    }
    std::uint32_t count = 0;
    for (DWORD waited = 0; waited < timeout_ms && code == 0 && count == 0; waited += 10) {
      code = receive(nullptr, &count);
      Sleep(count == 0 ? 10 : 0);
    }
    std::string answer(count, '\0');
    code = code != 0 || count == 0 ? code : receive(answer.data(), &count);
    return code != 0 ? "ReceiveData " + std::to_string(code) : answer.substr(0, count);
  }
};

std::string ReadAll(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The program with two printers; ended with the object.
class CNetworkProgram {
 public:
  explicit CNetworkProgram(const fs::path& folder) {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    HANDLE read_end = nullptr;
    HANDLE write_end = nullptr;
    CreatePipe(&read_end, &write_end, &inheritable, 0);
    SetHandleInformation(read_end, HANDLE_FLAG_INHERIT, 0);
    // The time is for the case that this process ends without ending it.
    std::wstring line =
        L"lxemu_network.exe --printer 127.0.0.2 --printer 127.0.0.3 --port 0 --search-port 0 "
        L"--listen 127.0.0.9 --for 100 --memory \"" +
        (folder / L"printers").wstring() + L"\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = write_end;
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                       &process_)) {
      CloseHandle(process_.hThread);
    }
    CloseHandle(write_end);
    ReadAddresses(read_end);
    CloseHandle(read_end);
  }
  ~CNetworkProgram() { End(); }
  CNetworkProgram(const CNetworkProgram&) = delete;
  CNetworkProgram& operator=(const CNetworkProgram&) = delete;

  void End() {
    if (process_.hProcess != nullptr) {
      TerminateProcess(process_.hProcess, 0);
      WaitForSingleObject(process_.hProcess, 10'000);
      CloseHandle(process_.hProcess);
      process_.hProcess = nullptr;
    }
  }

  /// "host:port" of each printer.
  const std::vector<std::wstring>& Addresses() const { return addresses_; }

 private:
  void ReadAddresses(HANDLE output) {
    std::string text;
    char byte = 0;
    DWORD count = 0;
    while (text.find("ready") == text.npos && ReadFile(output, &byte, 1, &count, nullptr) && count == 1) {
      text += byte;
    }
    std::istringstream words(text);
    for (std::string word, address, port; words >> word;) {
      if (word == "printer" && words >> address >> word >> port) {
        addresses_.push_back(std::wstring(address.begin(), address.end()) + L":" +
                             std::wstring(port.begin(), port.end()));
      }
    }
  }

  PROCESS_INFORMATION process_{};
  std::vector<std::wstring> addresses_;
};

class FerrolinkNetwork : public testing::Test {
 protected:
  FerrolinkNetwork()
      : folder_(fs::temp_directory_path() / ("ferrolink_network_" + std::to_string(GetCurrentProcessId()))) {
    fs::create_directories(folder_);
    SetEnvironmentVariableW(L"LXEMU_MEMORY", (folder_ / L"here").c_str());
    SetEnvironmentVariableW(L"LXEMU_LOG", (folder_ / L"exchange.log").c_str());
  }
  ~FerrolinkNetwork() override {
    std::error_code error;
    fs::remove_all(folder_, error);
  }

  void WriteIni(const fs::path& folder, const std::string& text) {
    fs::create_directories(folder);
    std::ofstream(folder / "printer.ini") << text;
    fs::last_write_time(folder / "printer.ini",
                        fs::file_time_type::clock::now() + std::chrono::seconds(10 * ++ini_count_));
  }

  fs::path folder_;
  int ini_count_ = 0;
};

TEST_F(FerrolinkNetwork, ReachesThePrinterThatTheAddressNames) {
  const CNetworkProgram program(folder_);
  ASSERT_EQ(program.Addresses().size(), 2u);
  const std::wstring& first = program.Addresses()[0];
  const std::wstring& second = program.Addresses()[1];
  CFerrolinkHost host;
  EXPECT_EQ(host.Exchange("^XA^S(CLR,Z,300^XZ^XA^JUS^XZ~DYE:LOGO,B,P,5,0,bytes~H(CLR,Z", 2000, first),
            "\x02^S(CLR,Z,300\x03\r\n");
  EXPECT_EQ(host.Exchange("~H(CLR,Z", 2000, second), "\x02^S(CLR,Z,600\x03\r\n");
  // Without an address: the printer in this process.
  EXPECT_EQ(host.Exchange("~H(CLR,Z"), "\x02^S(CLR,Z,600\x03\r\n");
  EXPECT_EQ(host.send("", 1), -1002);
  EXPECT_EQ(host.clear(), -1002);
  EXPECT_EQ(host.index(), 0);
  EXPECT_EQ(ReadAll(folder_ / "printers" / "127.0.0.2" / "E" / "LOGO.PNG"), "bytes");
  EXPECT_FALSE(fs::exists(folder_ / "printers" / "127.0.0.3" / "E"));
  EXPECT_FALSE(fs::exists(folder_ / "here" / "E"));
  const std::string log = ReadAll(folder_ / "exchange.log");
  EXPECT_NE(log.find("# open, port type 2, \"USB001\", \"\", \"127.0.0.2:"), std::string::npos) << log;
  EXPECT_NE(log.find("~H(CLR,Z (8) -> \\x02^S(CLR,Z,600\\x03\\r\\n (16)\n"), std::string::npos) << log;

  // A large answer comes with the first poll that sees it, not in pieces of what the system keeps.
  EXPECT_EQ(host.Exchange("~DYE:BIG,B,P,4000000,0," + std::string(4'000'000, 'x'), 1, second), "");
  EXPECT_GT(host.Exchange("^XA^H(YE:BIG.PNG^XZ", 20'000, second).size(), 5'300'000u);
}

TEST_F(FerrolinkNetwork, EachFailureHasItsCode) {
  CNetworkProgram program(folder_);
  ASSERT_EQ(program.Addresses().size(), 2u);
  const std::wstring first = program.Addresses()[0];
  CFerrolinkHost host;
  EXPECT_EQ(host.Exchange("~H(CLR,Z", 100, L"127.0.0.2:0"), "Initialize -1010");
  EXPECT_EQ(host.Exchange("~H(CLR,Z", 100, L"\x30D7"), "Initialize -1010");
  WriteIni(folder_ / "printers" / "127.0.0.2", "[faults]\nhang_up_at=4\n");
  EXPECT_EQ(host.Exchange("~H(CLR,Z", 1000, first), "ReceiveData -1013");
  WriteIni(folder_ / "printers" / "127.0.0.2", "[faults]\nsilent=1\n");
  EXPECT_EQ(host.Exchange("~H(CLR,Z", 200, first), "");
  // The faults of the calls are those of the host's own folder.
  WriteIni(folder_ / "here", "[faults]\nfail = Initialize:1:-21 SendData:1:-22 Poll:1:-23\n");
  EXPECT_EQ(host.Exchange("~H(CLR,Z", 200, first), "Initialize -21");
  EXPECT_EQ(host.Exchange("~H(CLR,Z", 200, first), "SendData -22");
  EXPECT_EQ(host.Exchange("~H(CLR,Z", 200, first), "ReceiveData -23");
  program.End();
  EXPECT_EQ(host.Exchange("~H(CLR,Z", 1000, first), "Initialize -1011");
}

}  // namespace
