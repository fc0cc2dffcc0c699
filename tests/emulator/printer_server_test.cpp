// Printers on the network, over sockets of this machine's loopback on ports that are free.
#include <random>
#include <vector>

#include "emulator/memory/memory_folder.h"
#include "emulator/network/network_port.h"
#include "emulator/port/port_endpoint.h"
#include "served_printers.h"
#include "wire.h"

namespace lxemu {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::uint32_t kLoopback = 0x7F000001;

const std::string kBroadcast = std::string("KORVAP") + std::string(8, '\0');
const std::string kNames = "KORVAQ\2" + std::string(7, '\0');
const std::string kState = "KORVAQ" + std::string(8, '\0');

// Wine sends datagrams from 127.0.0.1 whatever loopback address their socket is bound to, so only their ports
// tell printers apart there.
#ifdef _WIN32
constexpr bool kKeepsSource = false;
#else
constexpr bool kKeepsSource = true;
#endif

/// A host that searches.
class CSearcher {
 public:
  CSearcher() : socket_(CSocket::BindDatagram({kLoopback, 0}, problem_)) {}

  void Send(const std::string& datagram, const tagSocketAddress& to) const {
    EXPECT_TRUE(socket_.SendTo(datagram, to));
  }
  /// The next datagram, from wherever; empty when none comes in time.
  std::string Receive(std::uint32_t timeout_ms = 2000) {
    std::string buffer(2048, '\0');
    if (!WaitReadable(socket_, timeout_ms)) {
      return {};
    }
    buffer.resize(socket_.ReceiveFrom(buffer, from_).size);
    return buffer;
  }
  const tagSocketAddress& From() const { return from_; }

 private:
  std::string problem_;
  CSocket socket_;
  tagSocketAddress from_;
};

class PrinterServer : public testing::Test {
 protected:
  PrinterServer()
      : folder_(fs::temp_directory_path() / ("printer_server_" + std::to_string(std::random_device()()))) {}
  ~PrinterServer() override {
    printers_.reset();
    std::error_code error;
    fs::remove_all(folder_, error);
  }

  void Start() { printers_.emplace(folder_); }

  void WriteIni(const std::string& text) const { lxemu::WriteIni(folder_ / "1", text); }

  tagSocketAddress CommandAddress() const { return {kFirst, printers_->First().CommandPort()}; }
  tagSocketAddress SearchAddress() const { return {kFirst, printers_->First().SearchPort()}; }

  /// One exchange from opening to closing; an error code as text when a call fails.
  std::string Exchange(const std::string& commands, std::uint32_t timeout_ms = 2000) {
    CNetworkPort port;
    const std::int32_t code = port.Open(AddressText(CommandAddress()));
    return code == kPortOk ? ExchangeOn(port, commands, timeout_ms) : "Open " + std::to_string(code);
  }

  static std::string ExchangeOn(CNetworkPort& port, const std::string& commands,
                                std::uint32_t timeout_ms = 2000) {
    const std::string frame = Frame(commands);
    const std::int32_t code = port.Send(reinterpret_cast<const std::uint8_t*>(frame.data()),
                                        static_cast<std::uint32_t>(frame.size()));
    return code == kPortOk ? ReceiveOn(port, timeout_ms) : "Send " + std::to_string(code);
  }

  static std::string ReceiveOn(CNetworkPort& port, std::uint32_t timeout_ms) {
    const auto end = steady_clock::now() + milliseconds(timeout_ms);
    while (steady_clock::now() < end) {
      std::uint32_t count = 0;
      if (const std::int32_t code = port.Receive(nullptr, &count); code != kPortOk) {
        return "Receive " + std::to_string(code);
      }
      if (count > 0) {
        std::string answer(count, '\0');
        EXPECT_EQ(port.Receive(reinterpret_cast<std::uint8_t*>(answer.data()), &count), kPortOk);
        return answer.substr(0, count);
      }
      std::this_thread::sleep_for(milliseconds(2));
    }
    return "";
  }

  /// Everything that a plain connection receives until its end.
  static std::string ReceiveAll(const CSocket& socket) {
    std::string all;
    std::string buffer(65536, '\0');
    while (WaitReadable(socket, 5000)) {
      const tagTransfer received = socket.Receive(buffer);
      if (received.result != SocketResult::kDone) {
        break;
      }
      all.append(buffer, 0, received.size);
    }
    return all;
  }

  fs::path folder_;
  std::optional<CServedPrinters> printers_;
};

const std::string kQuery = "~H(CLR,Z";
const std::string kValue = "\x02^S(CLR,Z,600\x03\r\n";

TEST_F(PrinterServer, EachPrinterAnswersTheBroadcastFromItsOwnAddress) {
  Start();
  CSearcher host;
  host.Send(kBroadcast, printers_->ListenAddress());
  std::vector<std::string> froms;
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(host.Receive().substr(0, 6), "KORVAp");
    froms.push_back(AddressText({kKeepsSource ? host.From().ip : 0, host.From().port}));
  }
  const auto expected = [](std::uint32_t ip, std::uint16_t port) {
    return AddressText({kKeepsSource ? ip : 0, port});
  };
  EXPECT_EQ(froms, (std::vector<std::string>{expected(kFirst, printers_->First().SearchPort()),
                                             expected(kSecond, printers_->Second().SearchPort())}));
  // What is meant for one printer is not answered by all of them.
  host.Send(kNames, printers_->ListenAddress());
  host.Send(kNames, {kSecond, printers_->Second().SearchPort()});
  EXPECT_EQ(host.Receive().substr(16), std::string("LX-R4100\0second\0", 16));
  EXPECT_EQ(host.Receive(50), "");
}

TEST_F(PrinterServer, SearchFaultsReachTheWireAndChangeWhileItRuns) {
  WriteIni("[search]\nother_port = state\ntwice = names\n");
  Start();
  CSearcher host;
  host.Send(kState, SearchAddress());
  EXPECT_EQ(host.Receive().size(), 20u);
  EXPECT_TRUE(host.From().ip == kFirst || !kKeepsSource);
  EXPECT_NE(host.From().port, SearchAddress().port);
  // The exchange goes on with the port that replied.
  host.Send(kNames, host.From());
  EXPECT_EQ(host.Receive(), host.Receive());
  EXPECT_EQ(host.From().port, SearchAddress().port);

  WriteIni("[search]\ndelay_ms = 60\nlate = state:60\nagain = state:60\n");
  const auto start = steady_clock::now();
  host.Send(kState, SearchAddress());
  for (const int earliest_ms : {115, 175}) {
    EXPECT_EQ(host.Receive().size(), 20u);
    EXPECT_GE(steady_clock::now() - start, milliseconds(earliest_ms));
  }
  WriteIni("[search]\nsilent = names\n");
  host.Send(kNames, SearchAddress());
  host.Send(kState, SearchAddress());
  EXPECT_EQ(host.Receive().size(), 20u);
  EXPECT_EQ(host.Receive(50), "");
}

TEST_F(PrinterServer, AnswersCommandsAndKeepsItsMemory) {
  Start();
  CNetworkPort port;
  ASSERT_EQ(port.Open(AddressText(CommandAddress())), kPortOk);
  EXPECT_EQ(port.Open(AddressText(CommandAddress())), kPortAlreadyOpen);
  EXPECT_EQ(ExchangeOn(port, kQuery), kValue);
  // An answer that nobody read does not come in place of the next one.
  const std::string asking = Frame(kQuery);
  EXPECT_EQ(port.Send(reinterpret_cast<const std::uint8_t*>(asking.data()),
                      static_cast<std::uint32_t>(asking.size())),
            kPortOk);
  EXPECT_EQ(ExchangeOn(port, "^XA^H(E^XZ"), "\x02LX-R4100\x03\r\n");
  // A send is over when the printer has done its work: a second host sees the change at once.
  EXPECT_EQ(ExchangeOn(port, "^XA^S(CLR,Z,300^XZ^XA^JUS^XZ~DYE:LOGO,B,P,5,0,bytes", 1), "");
  EXPECT_EQ(Exchange(kQuery), "\x02^S(CLR,Z,300\x03\r\n");
  EXPECT_EQ(port.Close(), kPortOk);
  EXPECT_EQ(port.Close(), kPortNotOpen);
  EXPECT_EQ(ReadHostFile(folder_ / "1" / "E" / "LOGO.PNG"), "bytes");
  EXPECT_TRUE(fs::is_empty(folder_ / "2"));  // there from the start
  printers_.reset();
  Start();
  EXPECT_EQ(Exchange(kQuery), "\x02^S(CLR,Z,300\x03\r\n");
}

TEST_F(PrinterServer, ExchangeFaultsReachTheHost) {
  struct tagCase {
    const char* ini;
    std::string first;
    std::string second;
  };
  for (const tagCase& fault : {
           tagCase{"latency_ms = 60\n", kValue, kValue},
           tagCase{"latency_ms = 0\nsilent = 1\n", "", ""},
           tagCase{"latency_ms = 0\nsilent_from = 2\n", kValue, ""},
           tagCase{"latency_ms = 0\ncut_at = 4\n", kValue.substr(0, 4), kValue.substr(0, 4)},
           tagCase{"latency_ms = 0\nhang_up_at = 4\n", "Receive -1013", "Send -1013"},
       }) {
    SCOPED_TRACE(fault.ini);
    WriteIni(std::string("[faults]\n") + fault.ini);
    if (!printers_) {
      Start();
    }
    CNetworkPort port;
    ASSERT_EQ(port.Open(AddressText(CommandAddress())), kPortOk);
    EXPECT_EQ(ExchangeOn(port, kQuery, 300), fault.first);
    EXPECT_EQ(ExchangeOn(port, kQuery, 300), fault.second);
  }
}

TEST_F(PrinterServer, TakesPlainFramesFromHalfClosedConnections) {
  WriteIni("[faults]\nlatency_ms = 30\n");
  Start();
  CSocket host;
  ASSERT_EQ(CSocket::Connect(CommandAddress(), 1000, host), SocketResult::kDone);
  EXPECT_EQ(host.Send("noise" + Frame(kQuery) + "\n" + Frame("^XA^H(E^XZ") + "cut \x10\x1B\x1D").result,
            SocketResult::kDone);
  host.ShutdownSend();
  EXPECT_EQ(ReceiveAll(host), kValue + "\x02LX-R4100\x03\r\n");
}

TEST_F(PrinterServer, ServesManyHostsWhateverSomeOfThemDo) {
  WriteIni("[faults]\nlatency_ms = 0\n");
  Start();
  // One that says nothing, one in the middle of a record, one that asks for much and reads nothing, one that
  // leaves at once, one that sends what makes no sense.
  std::vector<CSocket> hosts(5);
  for (CSocket& host : hosts) {
    ASSERT_EQ(CSocket::Connect(CommandAddress(), 1000, host), SocketResult::kDone);
  }
  hosts[1].Send(RecordHeader({RecordKind::kCommands, 1, 1000}) + "part");
  ASSERT_EQ(Exchange("~DYE:BIG,B,P,3000000,0," + std::string(3'000'000, 'x'), 1), "");
  for (int i = 0; i < 20; ++i) {
    hosts[2].Send(Frame("^XA^H(YE:BIG.PNG^XZ"));
  }
  hosts[3].Send(Frame(kQuery));
  hosts[3].Close();
  hosts[4].Send(RecordHeader({RecordKind::kCommands, 1, 0xFFFFFFFF}) + std::string(100'000, 'z'));

  std::vector<std::thread> workers;
  std::atomic<int> right{0};
  for (int i = 0; i < 8; ++i) {
    workers.emplace_back([&] {
      for (int round = 0; round < 25; ++round) {
        right += Exchange(kQuery, 20'000) == kValue ? 1 : 0;
      }
    });
  }
  for (std::thread& worker : workers) {
    worker.join();
  }
  EXPECT_EQ(right, 200);
  EXPECT_EQ(ReceiveAll(hosts[4]), "");
}

}  // namespace
}  // namespace lxemu
