#include "discovery/network/socket_proc.h"

#include <gtest/gtest.h>

#include <array>
#include <span>

#include "scripted_sockets.h"
#include "support/test_world.h"
#include "unit/discovery/search/search_support.h"

namespace tavira::test {
namespace {

tagNetAddress AddressOf(std::string_view host) {
  tagNetAddress address{};
  address.kind = 1;
  std::copy(host.begin(), host.end(), std::begin(address.host));
  return address;
}

std::string ErrorText(INetProc& connection) {
  std::array<TvmgrChar, kErrorTextCapacity> buffer;
  buffer.fill('?');
  connection.GetLastErrorText(buffer.data());
  const WideView text(buffer.data());
  return {text.begin(), text.end()};
}

/** The layer in virtual time on sockets that follow a script. */
class SocketProcTest : public ::testing::Test {
 protected:
  std::uint32_t Open(std::uint32_t selector, std::string_view host = "printer") {
    const tagNetAddress address = AddressOf(host);
    return connection_.Open(&address, selector);
  }
  std::uint64_t Elapsed() const { return clock_.Now() - start_; }

  CScriptedSockets sockets_;
  CVirtualClock clock_;
  CLatin1Codec codec_;
  CTestThreads threads_;
  CSocketProc connection_{{sockets_, threads_, clock_, codec_}};
  std::uint64_t start_ = clock_.Now();
};

TEST_F(SocketProcTest, SelectorsChooseTheTypeOfSocketAndThePort) {
  const struct {
    std::uint32_t selector;
    const char* created;
    std::uint16_t port;
    std::uint32_t timeout_ms;
  } cases[] = {{11, "create 1", 80, 18000}, {12, "create 2", 3289, 3000}, {22, "create 2", 161, 3000},
               {32, "create 2", 69, 3000},  {42, "create 2", 21, 3000},   {9, "create 9", 0, 3000}};
  for (const auto& [selector, created, port, timeout_ms] : cases) {
    EXPECT_EQ(kNetDone, Open(selector)) << selector;
    EXPECT_EQ(1U, sockets_.Count(created)) << selector;
    EXPECT_EQ(SwapPort(port), connection_.GetRemotePort()) << selector;
    EXPECT_EQ(timeout_ms, sockets_.options["send timeout"]) << selector;
    EXPECT_EQ(timeout_ms, sockets_.options["receive timeout"]) << selector;
    EXPECT_EQ(selector == 11 || selector == 32 ? 1U : 0U, sockets_.Count("bind")) << selector;
    connection_.Close(0);
    sockets_.ClearLog();
  }
}

struct tagFailure {
  std::uint32_t selector;
  const char* failing;
  const char* text;
};

void CheckFailures(CSocketProc& connection, CScriptedSockets& sockets, std::span<const tagFailure> cases) {
  const tagNetAddress address = AddressOf("printer");
  for (const auto& [selector, failing, text] : cases) {
    sockets.failing = {failing};
    EXPECT_EQ(kNetFailed, connection.Open(&address, selector)) << selector << failing;
    EXPECT_EQ(text, ErrorText(connection)) << selector << failing;
    EXPECT_EQ(*text == '\0' ? 0U : 10013U, connection.GetLastErrorCode()) << selector << failing;
    EXPECT_EQ(0U, sockets.OpenSockets()) << selector << failing;
    char byte = 0;
    EXPECT_EQ(kNetFailed, connection.Send(&byte, 0, nullptr)) << selector << failing;
  }
  sockets.failing.clear();
  EXPECT_EQ(kNetDone, connection.Open(&address, 12));
  EXPECT_EQ("", ErrorText(connection));
  EXPECT_EQ(kNetFailed, connection.Open(nullptr, 12));
  EXPECT_EQ(0U, sockets.OpenSockets());
}

TEST_F(SocketProcTest, FailuresNameTheCallAndLeaveNoSocket) {
  const tagFailure cases[] = {
      {12, "create", "socket():"},
      {12, "send timeout", "setsockopt():"},
      {32, "bind", ""},
      {12, "receive timeout", "setsockopt():"},
      {11, "create", "socket():"},
      {11, "send timeout", "setsockopt():"},
      {11, "bind", "bind():"},
      {11, "receive timeout", "setsockopt():"},
      {11, "connect", "connect():"},
      {99, "create", "socket():"},
  };
  CheckFailures(connection_, sockets_, cases);
}

TEST_F(SocketProcTest, ADirectConnectTriesFourTimesWithPauses) {
  sockets_.on_connect = [](int attempt) { return attempt == 3; };
  EXPECT_EQ(kNetDone, Open(11));
  EXPECT_EQ(2 * 1000U + 500U, Elapsed());
  EXPECT_EQ("connect():", ErrorText(connection_));  // of the attempts before
  EXPECT_EQ(1U, sockets_.OpenSockets());
  connection_.Close(0);
  sockets_.on_connect = [](int) { return false; };
  start_ = clock_.Now();
  EXPECT_EQ(kNetFailed, Open(11));
  EXPECT_EQ(7U, sockets_.Count("connect"));
  EXPECT_EQ(4000U, Elapsed());
}

TEST_F(SocketProcTest, AnUnknownHostFailsWhenItIsUsed) {
  EXPECT_EQ(kNetDone, Open(12, "no such host"));
  connection_.Send("x", 1, nullptr);
  EXPECT_EQ((tagEndpoint{0, 3289}), sockets_.last_sent_to);
  tagNetAddress unterminated = AddressOf("");
  std::fill(std::begin(unterminated.host), std::end(unterminated.host), TvmgrChar{'a'});
  EXPECT_EQ(kNetDone, connection_.Open(&unterminated, 12));
}

TEST_F(SocketProcTest, TheLocalPortOfATransferIsTheFirstNumberDrawn) {
  class CSteppingClock final : public CVirtualClock {
   public:
    std::tm LocalTime() override {
      std::tm time = CVirtualClock::LocalTime();
      time.tm_sec = step++ / 2;  // twice the same second
      return time;
    }
    int step = 0;
  } clock;
  CSocketProc connection({sockets_, threads_, clock, codec_});
  const tagNetAddress address = AddressOf("printer");
  std::set<std::uint16_t> ports;
  while (clock.step < 1000) {
    EXPECT_EQ(kNetDone, connection.Open(&address, 32));
    EXPECT_EQ(0U, sockets_.last_bound.address);
    ports.insert(sockets_.last_bound.port);
  }
  EXPECT_LT(300U, ports.size());
  EXPECT_GE(500U, ports.size());  // the same second draws the same port
  EXPECT_GT(1024U, *ports.begin());
  EXPECT_LT(0x4000U, *ports.rbegin());
}

TEST_F(SocketProcTest, WaitingForDataPollsInTheReceiveTimeOut) {
  ASSERT_EQ(kNetDone, Open(12));
  char buffer[8];
  std::uint32_t count = 99;
  EXPECT_EQ(kNetNothingReceived, connection_.ReceiveWait(buffer, 8, &count, 0));
  EXPECT_EQ(0U, Elapsed());
  EXPECT_EQ(kNetNothingReceived, connection_.ReceiveWait(buffer, 8, &count, 1));
  EXPECT_EQ(3000U, Elapsed());
  connection_.SetReceiveTimeout(0);
  EXPECT_EQ(kNetNothingReceived, connection_.ReceiveWait(buffer, 8, &count, 1));
  EXPECT_EQ(3000U, Elapsed());
  EXPECT_EQ(0U, sockets_.Count("receive"));
  EXPECT_EQ(99U, count);

  connection_.SetReceiveTimeout(5);
  start_ = clock_.Now();
  sockets_.on_poll = [this] {
    if (Elapsed() == 100) {
      sockets_.arrivals = {{"late", {0x0A000001, 4000}}};
    }
  };
  EXPECT_EQ(kNetDone, connection_.ReceiveWait(buffer, 8, &count, 1));
  EXPECT_EQ(100U, Elapsed());
  EXPECT_EQ("late", std::string(buffer, count));
  EXPECT_EQ(SwapPort(4000), connection_.GetRemotePort());

  sockets_.on_poll = [this] {
    if (Elapsed() == 200) {
      sockets_.failing = {"poll"};
    }
  };
  EXPECT_EQ(kNetFailed, connection_.ReceiveWait(buffer, 8, &count, 1));
  EXPECT_EQ(200U, Elapsed());
  EXPECT_EQ(kNetFailed, connection_.ReceiveWait(buffer, 8, &count, 0));
}

TEST_F(SocketProcTest, OnlyATimeOutIsNothingReceived) {
  ASSERT_EQ(kNetDone, Open(12));
  sockets_.failing = {"receive", "send"};
  char buffer[8];
  for (const auto& [error, result] : {std::pair{10060U, kNetNothingReceived}, {10054U, kNetFailed}}) {
    sockets_.error = error;
    EXPECT_EQ(result, connection_.Receive(buffer, 8, nullptr));
    EXPECT_EQ("recv():", ErrorText(connection_));
    EXPECT_EQ(error, connection_.GetLastErrorCode());
  }
  EXPECT_EQ(kNetFailed, connection_.Send("x", 1, nullptr));
  EXPECT_EQ("send():", ErrorText(connection_));
  std::uint32_t count = 99;
  EXPECT_EQ(kNetDone, connection_.Send("x", 0, &count));
  EXPECT_EQ(0U, count);
  EXPECT_EQ(1U, sockets_.Count("sendto"));
}

TEST_F(SocketProcTest, WithoutASocketNothingIsTouched) {
  for (const bool closed : {false, true}) {
    if (closed) {
      ASSERT_EQ(kNetDone, Open(11));
      EXPECT_EQ(kNetDone, connection_.Close(7));
    }
    const std::size_t calls = sockets_.Calls();
    char buffer[1];
    std::uint32_t count = 9;
    for (const std::uint32_t result :
         {connection_.Receive(buffer, 1, &count), connection_.ReceiveWait(buffer, 1, &count, 1),
          connection_.Send(buffer, 1, &count), connection_.Send(buffer, 0, &count),
          connection_.SetSendTimeout(1), connection_.SetReceiveTimeout(1), connection_.Control(1, &count)}) {
      EXPECT_EQ(kNetFailed, result);
    }
    EXPECT_EQ(9U, count);
    EXPECT_EQ(calls, sockets_.Calls());
    connection_.GetLastErrorText(nullptr);
    EXPECT_EQ(kNetDone, connection_.Reserved5() + connection_.Reserved7());
  }
}

TEST_F(SocketProcTest, AReleasedConnectionCanOnlyBeClosed) {
  ASSERT_EQ(kNetDone, Open(12));
  connection_.Release();
  EXPECT_EQ(kNetFailed, Open(12));
  EXPECT_EQ(kNetDone, connection_.Close(0));
  EXPECT_EQ(0U, sockets_.OpenSockets());
}

TEST_F(SocketProcTest, ClosingTellsTheHookAndEndsBothDirections) {
  class CHooked final : public CSocketProc {
   public:
    using CSocketProc::CSocketProc;
    void OnClose(std::uint32_t flag) override { flags.push_back(flag); }
    std::vector<std::uint32_t> flags;
  };
  CHooked connection({sockets_, threads_, clock_, codec_});
  const tagNetAddress address = AddressOf("printer");
  ASSERT_EQ(kNetDone, connection.Open(&address, 12));
  EXPECT_EQ(kNetDone, connection.Close(3));
  EXPECT_EQ(kNetDone, connection.Close(4));
  EXPECT_EQ((std::vector<std::uint32_t>{3, 4}), connection.flags);
  EXPECT_EQ(1U, sockets_.Count("shutdown"));
  std::uint32_t argument = 0;
  ASSERT_EQ(kNetDone, connection.Open(&address, 12));
  EXPECT_EQ(kNetDone, connection.Control(kControlBytesWaiting, &argument));
  EXPECT_EQ(77U, argument);
}

/** Connectors have threads: time that runs a hundred times faster. */
class ConnectorTest : public SocketProcTest {
 protected:
  void SetUp() override {
    paced_.Flow(100);
    threaded_.SetUseConnectThread(1);
  }
  std::uint32_t OpenThreaded() {
    const tagNetAddress address = AddressOf("printer");
    return threaded_.Open(&address, 11);
  }

  CPacedClock paced_;
  CSocketProc threaded_{{sockets_, threads_, paced_, codec_}};
};

TEST_F(ConnectorTest, TheSocketOfTheConnectorBecomesTheConnection) {
  ASSERT_EQ(kNetDone, OpenThreaded());
  EXPECT_EQ(1U, sockets_.OpenSockets());
  std::uint32_t count = 0;
  EXPECT_EQ(kNetDone, threaded_.Send("hello", 5, &count));
  EXPECT_EQ(5U, count);
  threaded_.Close(0);
  EXPECT_EQ(0U, sockets_.OpenSockets());
}

TEST_F(ConnectorTest, FiveAttemptsTakeTheirWholeTime) {
  sockets_.failing = {"connect"};
  sockets_.error = 10061;
  const std::uint32_t start = paced_.TickCount();
  EXPECT_EQ(kNetFailed, OpenThreaded());
  EXPECT_LE(15000U, paced_.TickCount() - start);
  EXPECT_EQ(5U, sockets_.Count("connect"));
  EXPECT_EQ("connect():", ErrorText(threaded_));
  EXPECT_EQ(10061U, threaded_.GetLastErrorCode());
  EXPECT_EQ(0U, sockets_.OpenSockets());
}

TEST_F(ConnectorTest, AConnectThatHangsIsDroppedWhenItReturns) {
  // It returns once the next attempt has begun; that one connects once the late socket is gone, and not when all ends.
  sockets_.on_connect = [this](int attempt) {
    return Eventually(
        [&] { return attempt == 1 ? sockets_.Count("connect") > 1 : sockets_.Count("shutdown") > 0; });
  };
  ASSERT_EQ(kNetDone, OpenThreaded());
  EXPECT_EQ(1U, sockets_.OpenSockets());
}

TEST_F(ConnectorTest, FailuresNameTheCallAndLeaveNoSocket) {
  const tagFailure cases[] = {{11, "create", "socket():"},
                              {11, "bind", "bind():"},
                              {11, "send timeout", "setsockopt():"},
                              {11, "receive timeout", "setsockopt():"}};
  CheckFailures(threaded_, sockets_, cases);
}

TEST_F(ConnectorTest, WithoutAThreadThereIsNoAttempt) {
  threads_.error = 1455;
  EXPECT_EQ(kNetFailed, OpenThreaded());
  EXPECT_EQ("CConnect::startConnectThread CreateThread():", ErrorText(threaded_));
  EXPECT_EQ(1455U, threaded_.GetLastErrorCode());
  EXPECT_EQ(0U, sockets_.Count("create 1"));
  threads_.error = 0;
  EXPECT_EQ(kNetDone, OpenThreaded());
}

}  // namespace
}  // namespace tavira::test
