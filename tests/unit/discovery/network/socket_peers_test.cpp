// The platform's sockets, with real peers on this machine's loopback addresses.
#include <gtest/gtest.h>

#include <cstring>

#include "discovery/network/net_platform.h"
#include "unit/discovery/search/search_support.h"

namespace tavira::test {
namespace {

constexpr std::uint32_t kLoopback = 0x7F000001;

TEST(SocketsTest, ManySocketsAreWaitedForAtOnce) {
  const std::unique_ptr<ISockets> sockets = MakeSockets();
  std::vector<std::unique_ptr<CSocket>> owners;
  std::vector<tagSocketPoll> polls;
  for (std::uint16_t i = 0; i < 200; ++i) {
    owners.push_back(std::make_unique<CSocket>(*sockets));
    owners.back()->Reset(sockets->Create(kDatagramSocket));
    polls.push_back({owners.back()->Get()});
  }
  EXPECT_EQ(0, sockets->Poll(polls, 0));
  // Two of them get a datagram, the last one included.
  for (const std::size_t i : {7U, 199U}) {
    const auto port = static_cast<std::uint16_t>(20000 + i);
    ASSERT_TRUE(sockets->Bind(polls[i].socket, {kLoopback, port}));
    EXPECT_EQ(1, sockets->SendTo(polls[0].socket, "x", 1, {kLoopback, port}));
  }
  EXPECT_TRUE(Eventually([&] { return sockets->Poll(polls, 1000) == 2; }));
  for (std::size_t i = 0; i < polls.size(); ++i) {
    EXPECT_EQ(i == 7 || i == 199, polls[i].is_readable) << i;
  }
}

TEST(SocketsTest, AStreamIsRefusedOrCarriesBothWaysUntilThePeerEndsIt) {
  const std::unique_ptr<ISockets> sockets = MakeSockets();
  lxemu::StartSockets();
  std::string problem;
  lxemu::CSocket listener = lxemu::CSocket::Listen({kLoopback, 0}, problem);
  const std::uint16_t port = listener.LocalAddress().port;
  CSocket socket(*sockets);
  socket.Reset(sockets->Create(kStreamSocket));
  ASSERT_TRUE(sockets->Connect(socket.Get(), {kLoopback, port}));
  lxemu::CSocket peer;
  ASSERT_TRUE(Eventually([&] { return (peer = listener.Accept()).IsOpen(); }));
  char buffer[64];
  EXPECT_EQ(8, sockets->Send(socket.Get(), "question", 8));
  EXPECT_TRUE(Eventually([&] { return peer.Receive(buffer).size == 8; }));
  peer.Send("half an ans");
  peer.Close();
  EXPECT_EQ(1, sockets->PollReadable(socket.Get(), 1000));
  EXPECT_EQ(11, sockets->Receive(socket.Get(), buffer, sizeof(buffer)));
  EXPECT_EQ(0, sockets->Receive(socket.Get(), buffer, sizeof(buffer)));
  EXPECT_TRUE(sockets->Shutdown(socket.Get()));
  listener.Close();
  socket.Reset(sockets->Create(kStreamSocket));
  EXPECT_FALSE(sockets->Connect(socket.Get(), {kLoopback, port}));
  EXPECT_EQ(10061U, sockets->LastError());
}

TEST(SocketsTest, NumbersAreThoseOfWindowsOnEveryPlatform) {
  const std::unique_ptr<ISockets> sockets = MakeSockets();
  for (const std::int32_t type : {0, 12, 22, 0x802, -1}) {
    EXPECT_EQ(kInvalidSocket, sockets->Create(type)) << type;
  }
  CSocket socket(*sockets);
  CSocket other(*sockets);
  socket.Reset(sockets->Create(kDatagramSocket));
  other.Reset(sockets->Create(kDatagramSocket));
  ASSERT_TRUE(sockets->Bind(socket.Get(), {kLoopback, 0}));
  char buffer[4];
  tagEndpoint from;
  EXPECT_TRUE(sockets->SetOption(socket.Get(), ESocketOption::kReceiveTimeout, 30));
  EXPECT_EQ(-1, sockets->ReceiveFrom(socket.Get(), buffer, 4, from));
  EXPECT_EQ(10060U, sockets->LastError());
  EXPECT_EQ(0, sockets->PollReadable(socket.Get(), 10));
  std::uint32_t argument = 1;
  EXPECT_TRUE(sockets->Control(socket.Get(), kControlNonBlocking, argument));
  EXPECT_EQ(-1, sockets->ReceiveFrom(socket.Get(), buffer, 4, from));
  EXPECT_EQ(10035U, sockets->LastError());
  EXPECT_TRUE(sockets->Control(socket.Get(), kControlBytesWaiting, argument));
  EXPECT_EQ(0U, argument);
  EXPECT_FALSE(sockets->Control(socket.Get(), 12345, argument));
  EXPECT_EQ(-1, sockets->SendTo(socket.Get(), "x", 1, {0, 9}));
  EXPECT_EQ(10049U, sockets->LastError());
  std::uint32_t blocking = 0;
  EXPECT_TRUE(sockets->Control(socket.Get(), kControlNonBlocking, blocking));
  ASSERT_TRUE(sockets->Bind(other.Get(), {kLoopback, 20198}));
  for (const char* sent : {"too large", "fits"}) {
    sockets->SendTo(socket.Get(), sent, std::strlen(sent), {kLoopback, 20198});
  }
  EXPECT_EQ(-1, sockets->ReceiveFrom(other.Get(), buffer, 4, from));
  EXPECT_EQ(10040U, sockets->LastError());
  EXPECT_EQ(4, sockets->ReceiveFrom(other.Get(), buffer, 4, from));
  EXPECT_EQ(-1, sockets->PollReadable(kInvalidSocket, 0));
  EXPECT_EQ(10038U, sockets->LastError());
  tagSocketPoll both[] = {{socket.Get()}, {kInvalidSocket}};
  EXPECT_EQ(-1, sockets->Poll(both, 0));
  EXPECT_EQ(kLoopback, sockets->Resolve("127.0.0.1"));
  EXPECT_EQ(std::nullopt, sockets->Resolve(""));
}

}  // namespace
}  // namespace tavira::test
