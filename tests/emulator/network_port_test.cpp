// The host's end of a connection, against peers that are not there or not as they should be.
#include "emulator/network/network_port.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "emulator/port/port_endpoint.h"
#include "wire.h"

namespace lxemu {
namespace {

constexpr std::uint32_t kPeer = 0x7F000002;  // 127.0.0.2

TEST(NetworkPort, TellsWhatIsWrongWithAnAddress) {
  CNetworkPort port({300, 300});
  for (const char* address :
       {"", ":9100", "127.0.0.2:", "127.0.0.2:0", "127.0.0.2:65536", "127.0.0.2:9100x"}) {
    EXPECT_EQ(port.Open(address), kPortNoAddress) << address;
  }
  std::string problem;
  CSocket listener = CSocket::Listen({kPeer, 0}, problem);
  const std::string address = AddressText(listener.LocalAddress());
#ifndef _WIN32
  // A peer whose queue is full answers nobody.
  std::vector<CSocket> waiting;
  do {
    waiting.emplace_back();
  } while (CSocket::Connect(listener.LocalAddress(), 100, waiting.back()) == SocketResult::kDone &&
           waiting.size() < 1000);
  EXPECT_EQ(port.Open(address), kPortUnreachable);
#endif
  listener.Close();
  EXPECT_EQ(port.Open(address), kPortRefused);
  EXPECT_FALSE(port.IsOpen());
  std::uint32_t size = 0;
  EXPECT_EQ(port.Send(nullptr, 0), kPortNotOpen);
  EXPECT_EQ(port.Receive(nullptr, &size), kPortNotOpen);
  EXPECT_EQ(port.Clear(), kPortNotOpen);
}

TEST(NetworkPort, TellsWhatIsWrongWithAPeer) {
  struct tagCase {
    const char* what;
    std::string reply;
    bool closes;
    std::int32_t send_code;
    std::int32_t receive_code;
  };
  const std::string taken = RecordHeader({RecordKind::kTaken, 1, 0});
  const std::string answer = RecordHeader({RecordKind::kAnswer, 1, 6});
  for (const tagCase& peer : {
           tagCase{"says nothing", "", false, kPortStalled, kPortOk},
           tagCase{"closes at once", "", true, kPortBroken, kPortBroken},
           tagCase{"speaks otherwise", "HTTP/1.1 400 Bad Request\r\n", false, kPortNoPrinter, kPortNoPrinter},
           tagCase{"has an answer beyond all measure",
                   taken + "LXEA" + std::string(3, '\0') + "\1\x7F" + "123", false, kPortOk, kPortNoPrinter},
           tagCase{"stalls in the answer", taken + answer + "abc", false, kPortOk, kPortStalled},
           tagCase{"closes in the answer", taken + answer + "abc", true, kPortOk, kPortBroken},
           tagCase{"answers whole and closes", taken + answer + "abcdef", true, kPortOk, kPortOk},
       }) {
    SCOPED_TRACE(peer.what);
    std::string problem;
    const CSocket listener = CSocket::Listen({kPeer, 0}, problem);
    CNetworkPort port({1000, 100});
    ASSERT_EQ(port.Open(AddressText(listener.LocalAddress())), kPortOk);
    CSocket accepted;
    ASSERT_TRUE(WaitReadable(listener, 1000));
    accepted = listener.Accept();
    accepted.Send(peer.reply);
    if (peer.closes) {
      accepted.ShutdownSend();
    }
    const std::uint8_t byte = 'x';
    EXPECT_EQ(port.Send(&byte, 1), peer.send_code);
    std::uint32_t size = 99;
    EXPECT_EQ(port.Receive(nullptr, &size), peer.receive_code);
    EXPECT_EQ(size, peer.reply.ends_with("abcdef") ? 6u : 0u);
  }
}

}  // namespace
}  // namespace lxemu
