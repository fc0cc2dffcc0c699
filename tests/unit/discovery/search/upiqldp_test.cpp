#include "discovery/search/upiqldp.h"

#include <gtest/gtest.h>

#include "discovery/network/socket_proc.h"
#include "search_support.h"
#include "support/test_world.h"
#include "unit/discovery/network/scripted_sockets.h"

namespace tavira::test {
namespace {

constexpr tagEndpoint kPrinter{0x0A000001, 3289};

std::string Answer(std::string_view data = {}) {
  return "KORVAq" + std::string(8, '\0') + std::string(data);
}

class UpiqldpTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const WideString host = WidenAscii("printer");
    host.copy(address_.host, host.size());
    ASSERT_EQ(kNetDone, driver_.Open(address_));
    start_ = clock_.Now();
  }

  /** What arrives `ms` after the last request. */
  void Script(std::uint32_t ms, std::vector<std::pair<std::string, tagEndpoint>> arrivals) {
    sockets_.on_poll = [this, ms, arrivals, done = false]() mutable {
      if (!done && sockets_.Count("sendto") == requests_ + 1 && clock_.Now() - start_ >= ms) {
        sockets_.arrivals = arrivals;
        done = true;
      }
    };
  }

  CScriptedSockets sockets_;
  CVirtualClock clock_;
  CLatin1Codec codec_;
  CSocketProc connection_{sockets_, clock_, codec_};
  CUPIQLDP driver_{connection_, 4711};
  tagNetAddress address_{1, {}};
  std::uint64_t start_ = 0;
  std::size_t requests_ = 0;
  std::string answer_ = "untouched";
};

TEST_F(UpiqldpTest, OnlyOneKindOfAddressIsTaken) {
  for (const std::uint32_t kind : {0U, 2U, 0xFFFFFFFFU}) {
    address_.kind = kind;
    EXPECT_EQ(kNetFailed, driver_.Open(address_)) << kind;
  }
}

TEST_F(UpiqldpTest, AnExchangeHandsOverTheWholeAnswer) {
  Script(100, {{Answer("data"), kPrinter}});
  EXPECT_EQ(kNetDone, driver_.Exchange(kSearchState, answer_));
  EXPECT_EQ(Answer("data"), answer_);
  EXPECT_EQ((tagEndpoint{kPrinter.address, 4711}), sockets_.last_sent_to);
}

TEST_F(UpiqldpTest, ASilentPrinterTakesSixReceives) {
  EXPECT_EQ(kNetNothingReceived, driver_.Exchange(kSearchState, answer_));
  EXPECT_EQ(18000U, clock_.Now() - start_);
  EXPECT_EQ(1U, sockets_.Count("sendto"));
  requests_ = 1;
  start_ = clock_.Now();
  Script(17000, {{Answer(), kPrinter}});
  EXPECT_EQ(kNetDone, driver_.Exchange(kSearchState, answer_));
}

TEST_F(UpiqldpTest, BadAnswersFailAndLeaveTheCallersBytes) {
  for (const std::string& bytes :
       {std::string("KORVAx") + std::string(8, '\0'), Answer().substr(0, 11), std::string()}) {
    Script(0, {{bytes, kPrinter}});
    EXPECT_EQ(kNetFailed, driver_.Exchange(kSearchState, answer_));
    EXPECT_EQ("untouched", answer_);
    requests_ = sockets_.Count("sendto");
  }
  driver_.SetTargetMac("010203040506");
  Script(0, {{Answer("\1\2\3\4\5\7"), kPrinter}});
  EXPECT_EQ(kNetFailed, driver_.Exchange(kSearchState, answer_));
  requests_ = sockets_.Count("sendto");
  Script(0, {{Answer("\1\2\3\4\5\6"), kPrinter}});
  EXPECT_EQ(kNetDone, driver_.Exchange(kSearchState, answer_));
  for (const char* failing : {"send", "receive", "poll"}) {
    requests_ = sockets_.Count("sendto");
    Script(0, {{Answer(), kPrinter}});
    sockets_.failing = {failing};
    EXPECT_EQ(kNetFailed, driver_.Exchange(kSearchState, answer_)) << failing;
    sockets_.failing.clear();
    sockets_.arrivals.clear();
  }
}

TEST_F(UpiqldpTest, AShortAnswerIsNotCompletedByAnEarlierOne) {
  Script(0, {{Answer("\1\2\3\4\5\6"), kPrinter}});
  EXPECT_EQ(kNetDone, driver_.Exchange(kSearchState, answer_));
  requests_ = 1;
  Script(0, {{"KORVAq", kPrinter}});
  EXPECT_EQ(kNetFailed, driver_.Exchange(kSearchState, answer_));
}

TEST_F(UpiqldpTest, ASecondAnswerIsNotTakenForTheNextOne) {
  Script(0, {{Answer("state"), kPrinter}, {Answer("state"), {kPrinter.address, 5000}}});
  EXPECT_EQ(kNetDone, driver_.Exchange(kSearchState, answer_));
  requests_ = 1;
  Script(0, {{Answer("names"), kPrinter}});
  sockets_.arrivals.emplace_back(Answer("state"), tagEndpoint{kPrinter.address, 5000});
  EXPECT_EQ(kNetDone, driver_.Exchange(kSearchNames, answer_));
  EXPECT_EQ(Answer("names"), answer_);
  EXPECT_EQ(kPrinter, sockets_.last_sent_to);  // the port of the answer that was taken
}

TEST_F(UpiqldpTest, AStopEndsTheWaitAtTheNextReceive) {
  std::stop_source stop;
  sockets_.on_poll = [&] {
    if (clock_.Now() - start_ >= 4000) {
      stop.request_stop();
    }
  };
  EXPECT_EQ(kNetFailed, driver_.Exchange(kSearchState, answer_, stop.get_token()));
  EXPECT_EQ(6000U, clock_.Now() - start_);
}

}  // namespace
}  // namespace tavira::test
