// Ferrolink.dll as a host sees it, with its own printer and with printers on the network, which this program serves on the
// loopback. (What it keeps from process to process: tests/cli.)
#include <windows.h>

#include <iterator>
#include <optional>

#include "served_printers.h"

namespace lxemu {
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

  template <typename... Arguments>
  std::int32_t Call(const char* name, Arguments... arguments) const {
    const auto function = reinterpret_cast<std::int32_t (*)(Arguments...)>(
        reinterpret_cast<void*>(GetProcAddress(library_, name)));
    return function(arguments...);
  }

  /// One exchange from opening to closing; an error code as text when a call fails.
  std::string Exchange(const std::string& commands, DWORD timeout_ms = 2000,
                       const std::wstring& address = {}) const {
    tagDescription description;
    description.port_type = address.empty() ? 1 : 2;
    description.strings[2] = address.c_str();
    std::int32_t code = Call<const void*>("Initialize", &description);
    const std::string answer =
        code != 0 ? "Initialize " + std::to_string(code) : SendAndReceive(commands, timeout_ms);
    Call("Terminate");
    return answer;
  }

 private:
  std::string SendAndReceive(const std::string& commands, DWORD timeout_ms) const {
    const std::string frame = "\x10\x1B\x1D\x1B\x1B" + commands + "\x10\x1B\x1D\x1B\x1C";
    std::int32_t code = Call<const void*>("SendData", frame.data(), static_cast<std::uint32_t>(frame.size()));
    if (code != 0) {
      return "SendData " + std::to_string(code);
    }
    std::uint32_t count = 0;
    for (DWORD waited = 0; waited < timeout_ms && code == 0 && count == 0; waited += 10) {
      code = Call<void*>("ReceiveData", nullptr, &count);
      Sleep(count == 0 ? 10 : 0);
    }
    std::string answer(count, '\0');
    code = code != 0 || count == 0 ? code : Call<void*>("ReceiveData", answer.data(), &count);
    return code != 0 ? "ReceiveData " + std::to_string(code) : answer.substr(0, count);
  }

  const HMODULE library_ = LoadLibraryW(L"Ferrolink.dll");
};

std::string ReadAll(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class FerrolinkNetwork : public testing::Test {
 protected:
  FerrolinkNetwork()
      : folder_(fs::temp_directory_path() / ("ferrolink_network_" + std::to_string(GetCurrentProcessId()))) {
    fs::create_directories(folder_);
    SetEnvironmentVariableW(L"LXEMU_MEMORY", (folder_ / L"here").c_str());
    SetEnvironmentVariableW(L"LXEMU_LOG", (folder_ / L"exchange.log").c_str());
    printers_.emplace(folder_);
  }
  ~FerrolinkNetwork() override {
    printers_.reset();
    std::error_code error;
    fs::remove_all(folder_, error);
  }

  static std::wstring Address(std::uint32_t ip, const CNetworkPrinter& printer) {
    const std::string text = AddressText({ip, printer.CommandPort()});
    return {text.begin(), text.end()};
  }

  const fs::path folder_;
  std::optional<CServedPrinters> printers_;
};

TEST_F(FerrolinkNetwork, ReachesThePrinterThatTheAddressNames) {
  const std::wstring first = Address(kFirst, printers_->First());
  const std::wstring second = Address(kSecond, printers_->Second());
  CFerrolinkHost host;
  EXPECT_EQ(host.Exchange("^XA^S(CLR,Z,300^XZ^XA^JUS^XZ~DYE:LOGO,B,P,5,0,bytes~H(CLR,Z", 2000, first),
            "\x02^S(CLR,Z,300\x03\r\n");
  EXPECT_EQ(host.Exchange("~H(CLR,Z", 2000, second), "\x02^S(CLR,Z,600\x03\r\n");
  // Without an address: the printer in this process.
  EXPECT_EQ(host.Exchange("~H(CLR,Z"), "\x02^S(CLR,Z,600\x03\r\n");
  EXPECT_EQ(host.Call<const void*>("SendData", "", 1U), -1002);
  EXPECT_EQ(host.Call("ClearReceiveData"), -1002);
  EXPECT_EQ(host.Call("GetPortComIndex"), 0);
  EXPECT_EQ(ReadAll(folder_ / "1" / "E" / "LOGO.PNG"), "bytes");
  EXPECT_FALSE(fs::exists(folder_ / "2" / "E"));
  EXPECT_FALSE(fs::exists(folder_ / "here" / "E"));
  const std::string log = ReadAll(folder_ / "exchange.log");
  EXPECT_NE(log.find("# open, port type 2, \"USB001\", \"\", \"127.0.0.2:"), std::string::npos) << log;
  EXPECT_NE(log.find("~H(CLR,Z (8) -> \\x02^S(CLR,Z,600\\x03\\r\\n (16)\n"), std::string::npos) << log;

  // A large answer comes with the first poll that sees it, not in pieces of what the system keeps.
  EXPECT_EQ(host.Exchange("~DYE:BIG,B,P,4000000,0," + std::string(4'000'000, 'x'), 1, second), "");
  EXPECT_GT(host.Exchange("^XA^H(YE:BIG.PNG^XZ", 20'000, second).size(), 5'300'000u);
}

TEST_F(FerrolinkNetwork, EachFailureHasItsCode) {
  const std::wstring first = Address(kFirst, printers_->First());
  CFerrolinkHost host;
  const auto ask = [&] { return host.Exchange("~H(CLR,Z", 1000, first); };
  EXPECT_EQ(host.Exchange("~H(CLR,Z", 100, L"127.0.0.2:0"), "Initialize -1010");
  EXPECT_EQ(host.Exchange("~H(CLR,Z", 100, L"\x30D7"), "Initialize -1010");
  WriteIni(folder_ / "1", "[faults]\nhang_up_at=4\n");
  EXPECT_EQ(ask(), "ReceiveData -1013");
  WriteIni(folder_ / "1", "[faults]\nsilent=1\n");
  EXPECT_EQ(host.Exchange("~H(CLR,Z", 200, first), "");
  // The faults of the calls are those of the host's own folder.
  WriteIni(folder_ / "here", "[faults]\nfail = Initialize:1:-21 SendData:1:-22 Poll:1:-23\n");
  for (const char* failure : {"Initialize -21", "SendData -22", "ReceiveData -23"}) {
    EXPECT_EQ(ask(), failure);
  }
  printers_.reset();
  EXPECT_EQ(ask(), "Initialize -1011");
}

}  // namespace
}  // namespace lxemu
