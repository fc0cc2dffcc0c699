// The socket layer against real peers on this machine's loopback addresses.
#include <gtest/gtest.h>

#include <array>

#include "discovery/network/socket_proc.h"
#include "support/test_world.h"
#include "unit/discovery/search/search_support.h"

namespace tavira::test {
namespace {

constexpr std::uint32_t kLoopback = 0x7F000001;

/** Real sockets, but for the ports of printers, which stand elsewhere for a test. */
class CRedirectedSockets final : public ISockets {
 public:
  std::uint16_t port = 0; /**< in place of the protocol's */
  std::atomic<std::uint16_t> protocol_port{0};

  SocketHandle Create(std::int32_t type) override { return real_->Create(type); }
  bool Bind(SocketHandle socket, const tagEndpoint& local) override { return real_->Bind(socket, local); }
  bool Connect(SocketHandle socket, const tagEndpoint& remote) override {
    return real_->Connect(socket, Redirect(remote));
  }
  std::int32_t Send(SocketHandle socket, const void* bytes, std::size_t size) override {
    return real_->Send(socket, bytes, size);
  }
  std::int32_t SendTo(SocketHandle socket, const void* bytes, std::size_t size,
                      const tagEndpoint& to) override {
    return real_->SendTo(socket, bytes, size, Redirect(to));
  }
  std::int32_t Receive(SocketHandle socket, void* buffer, std::size_t size) override {
    return real_->Receive(socket, buffer, size);
  }
  std::int32_t ReceiveFrom(SocketHandle socket, void* buffer, std::size_t size, tagEndpoint& from) override {
    return real_->ReceiveFrom(socket, buffer, size, from);
  }
  std::int32_t Poll(std::span<tagSocketPoll> sockets, std::uint32_t wait_ms) override {
    return real_->Poll(sockets, wait_ms);
  }
  bool SetOption(SocketHandle socket, ESocketOption option, std::uint32_t value) override {
    return real_->SetOption(socket, option, value);
  }
  bool Control(SocketHandle socket, std::uint32_t command, std::uint32_t& argument) override {
    return real_->Control(socket, command, argument);
  }
  bool Shutdown(SocketHandle socket) override { return real_->Shutdown(socket); }
  bool Close(SocketHandle socket) override { return real_->Close(socket); }
  std::optional<std::uint32_t> Resolve(const std::string& host) override { return real_->Resolve(host); }
  std::uint32_t LastError() override { return real_->LastError(); }

 private:
  tagEndpoint Redirect(const tagEndpoint& remote) const {
    return remote.port == protocol_port ? tagEndpoint{remote.address, port} : remote;
  }

  std::unique_ptr<ISockets> real_ = MakeSockets();
};

class SocketPeersTest : public ::testing::Test {
 protected:
  std::uint32_t Open(std::uint32_t selector, std::uint16_t peer_port) {
    sockets_.protocol_port = selector == kSelectorHttp ? 80 : 3289;
    sockets_.port = peer_port;
    tagNetAddress address{};
    address.kind = 1;
    const WideString host = WidenAscii("127.0.0.1");
    host.copy(address.host, host.size());
    return connection_.Open(&address, selector);
  }

  std::uint32_t Send(std::string_view bytes) {
    std::uint32_t count = 0;
    const std::uint32_t result =
        connection_.Send(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &count);
    EXPECT_EQ(result == kNetDone ? bytes.size() : 0, count);
    return result;
  }

  /** What one receive brings, or its result. */
  std::string Receive() {
    std::array<char, 64> buffer;
    std::uint32_t count = 0;
    const std::uint32_t result = connection_.Receive(buffer.data(), buffer.size(), &count);
    return result == kNetDone ? std::string(buffer.data(), count) : "result " + std::to_string(result);
  }

  static lxemu::CSocket BindPeer() {
    lxemu::StartSockets();
    std::string problem;
    return lxemu::CSocket::BindDatagram({kLoopback, 0}, problem);
  }
  static lxemu::CSocket ListenPeer() {
    lxemu::StartSockets();
    std::string problem;
    return lxemu::CSocket::Listen({kLoopback, 0}, problem);
  }
  static lxemu::CSocket Accept(const lxemu::CSocket& listener) {
    lxemu::CSocket peer;
    EXPECT_TRUE(Eventually([&] {
      peer = listener.Accept();
      return peer.IsOpen();
    }));
    return peer;
  }

  /** The next datagram of a peer and where it came from. */
  static std::string PeerReceive(const lxemu::CSocket& peer, lxemu::tagSocketAddress& from) {
    std::array<char, 64> buffer;
    lxemu::tagTransfer got;
    EXPECT_TRUE(Eventually([&] {
      got = peer.ReceiveFrom(buffer, from);
      return got.result == lxemu::SocketResult::kDone;
    }));
    return {buffer.data(), got.size};
  }

  CRedirectedSockets sockets_;
  CVirtualClock clock_;
  CLatin1Codec codec_;
  const std::unique_ptr<IThreads> threads_ = MakeThreads();
  CSocketProc connection_{{sockets_, *threads_, clock_, codec_}};
};

TEST_F(SocketPeersTest, NobodyListensAtAStreamPort) {
  std::uint16_t port = 0;
  {
    const lxemu::CSocket listener = ListenPeer();
    port = listener.LocalAddress().port;
  }
  const std::uint64_t start = clock_.Now();
  EXPECT_EQ(kNetFailed, Open(kSelectorHttp, port));
  EXPECT_EQ(4000U, clock_.Now() - start);
  EXPECT_EQ(kSocketErrorRefused, connection_.GetLastErrorCode());

  CPacedClock fast;
  fast.Flow(100);
  CSocketProc by_thread({sockets_, *threads_, fast, codec_});
  by_thread.SetUseConnectThread(1);
  tagNetAddress address{};
  const WideString host = WidenAscii("127.0.0.1");
  host.copy(address.host, host.size());
  EXPECT_EQ(kNetFailed, by_thread.Open(&address, kSelectorHttp));
  EXPECT_EQ(kSocketErrorRefused, by_thread.GetLastErrorCode());
}

TEST_F(SocketPeersTest, AStreamCarriesBothWaysUntilThePeerEndsIt) {
  for (const bool by_thread : {false, true}) {
    CPacedClock fast;
    fast.Flow(100);
    const lxemu::CSocket listener = ListenPeer();
    CSocketProc threaded({sockets_, *threads_, fast, codec_});
    threaded.SetUseConnectThread(by_thread ? 1 : 0);
    tagNetAddress address{};
    const WideString host = WidenAscii("localhost");
    host.copy(address.host, host.size());
    sockets_.protocol_port = 80;
    sockets_.port = listener.LocalAddress().port;
    ASSERT_EQ(kNetDone, threaded.Open(&address, kSelectorHttp));
    lxemu::CSocket peer = Accept(listener);
    std::uint32_t count = 0;
    EXPECT_EQ(kNetDone, threaded.Send("question", 8, &count));
    std::array<char, 64> buffer;
    EXPECT_TRUE(Eventually([&] { return peer.Receive(buffer).size == 8; }));
    EXPECT_EQ(kNetNothingReceived, threaded.ReceiveWait(buffer.data(), 64, &count, 0));
    peer.Send("half an ans");
    peer.Close();
    EXPECT_EQ(kNetDone, threaded.ReceiveWait(buffer.data(), 64, &count, 1));
    EXPECT_EQ("half an ans", std::string(buffer.data(), count));
    EXPECT_EQ(kNetDone, threaded.ReceiveWait(buffer.data(), 64, &count, 1));
    EXPECT_EQ(0U, count);
    EXPECT_EQ(kNetDone, threaded.Close(0));
    EXPECT_EQ(kNetFailed, threaded.Send("x", 1, &count));
  }
}

TEST_F(SocketPeersTest, ASilentPeerIsATimeOutAndALateOneIsHeard) {
  const lxemu::CSocket peer = BindPeer();
  ASSERT_EQ(kNetDone, Open(kSelectorSearch, peer.LocalAddress().port));
  EXPECT_EQ(kNetDone, connection_.SetReceiveTimeout(1));
  EXPECT_EQ(kNetDone, Send("anybody?"));
  lxemu::tagSocketAddress host;
  EXPECT_EQ("anybody?", PeerReceive(peer, host));
  EXPECT_EQ("result " + std::to_string(kNetNothingReceived), Receive());  // takes a real second
  EXPECT_EQ(kSocketErrorTimedOut, connection_.GetLastErrorCode());
  peer.SendTo("here", host);
  EXPECT_EQ("here", Receive());
}

TEST_F(SocketPeersTest, LaterSendsFollowThePortThatReplied) {
  const lxemu::CSocket peer = BindPeer();
  const lxemu::CSocket other = BindPeer();
  ASSERT_EQ(kNetDone, Open(kSelectorSearch, peer.LocalAddress().port));
  EXPECT_EQ(kNetDone, Send("first"));
  lxemu::tagSocketAddress host;
  EXPECT_EQ("first", PeerReceive(peer, host));
  other.SendTo("from elsewhere", host);
  EXPECT_EQ("from elsewhere", Receive());
  EXPECT_EQ(SwapPort(other.LocalAddress().port), connection_.GetRemotePort());
  EXPECT_EQ(kNetDone, Send("second"));
  EXPECT_EQ("second", PeerReceive(other, host));
  connection_.SetRemotePort(SwapPort(peer.LocalAddress().port));
  EXPECT_EQ(kNetDone, Send("third"));
  EXPECT_EQ("third", PeerReceive(peer, host));
}

TEST_F(SocketPeersTest, ADatagramLargerThanTheBufferIsLost) {
  const lxemu::CSocket peer = BindPeer();
  ASSERT_EQ(kNetDone, Open(kSelectorSearch, peer.LocalAddress().port));
  EXPECT_EQ(kNetDone, Send("?"));
  lxemu::tagSocketAddress host;
  PeerReceive(peer, host);
  peer.SendTo(std::string(65, 'x'), host);
  peer.SendTo("fits", host);
  EXPECT_EQ("result 65535", Receive());
  EXPECT_EQ(kSocketErrorMessageSize, connection_.GetLastErrorCode());
  EXPECT_EQ("fits", Receive());
}

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

TEST(SocketsTest, NumbersAreThoseOfWindowsOnEveryPlatform) {
  const std::unique_ptr<ISockets> sockets = MakeSockets();
  for (const std::int32_t type : {0, 12, 22, 0x802, -1}) {
    EXPECT_EQ(kInvalidSocket, sockets->Create(type)) << type;
  }
  CSocket socket(*sockets);
  socket.Reset(sockets->Create(kDatagramSocket));
  ASSERT_TRUE(sockets->Bind(socket.Get(), {kLoopback, 0}));
  char buffer[4];
  tagEndpoint from;
  EXPECT_TRUE(sockets->SetOption(socket.Get(), ESocketOption::kReceiveTimeout, 30));
  EXPECT_EQ(-1, sockets->ReceiveFrom(socket.Get(), buffer, 4, from));
  EXPECT_EQ(kSocketErrorTimedOut, sockets->LastError());
  EXPECT_EQ(0, sockets->PollReadable(socket.Get(), 10));
  std::uint32_t argument = 1;
  EXPECT_TRUE(sockets->Control(socket.Get(), kControlNonBlocking, argument));
  EXPECT_EQ(-1, sockets->ReceiveFrom(socket.Get(), buffer, 4, from));
  EXPECT_EQ(kSocketErrorWouldBlock, sockets->LastError());
  EXPECT_TRUE(sockets->Control(socket.Get(), kControlBytesWaiting, argument));
  EXPECT_EQ(0U, argument);
  EXPECT_FALSE(sockets->Control(socket.Get(), 12345, argument));
  EXPECT_EQ(-1, sockets->SendTo(socket.Get(), "x", 1, {0, 9}));
  EXPECT_EQ(10049U, sockets->LastError());
  EXPECT_EQ(-1, sockets->PollReadable(kInvalidSocket, 0));
  EXPECT_EQ(10038U, sockets->LastError());
  tagSocketPoll both[] = {{socket.Get()}, {kInvalidSocket}};
  EXPECT_EQ(-1, sockets->Poll(both, 0));
  EXPECT_EQ(kLoopback, sockets->Resolve("127.0.0.1"));
  EXPECT_EQ(std::nullopt, sockets->Resolve(""));
}

}  // namespace
}  // namespace tavira::test
