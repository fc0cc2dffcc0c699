#include "discovery/search/upiqldp.h"

#include <gtest/gtest.h>

#include "search_support.h"
#include "support/test_world.h"
#include "unit/discovery/network/scripted_sockets.h"

namespace tavira::test {
namespace {

constexpr tagEndpoint kPrinter{0x0A000001, 3289};
constexpr tagEndpoint kOtherPort{kPrinter.address, 5000};
constexpr tagEndpoint kStranger{0x0A000002, 3289};

std::string Answer(std::string_view data = {}) {
  return "KORVAq" + std::string(8, '\0') + std::string(data);
}

class UpiqldpTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const WideString host = WidenAscii("printer");
    host.copy(address_.host, host.size());
    ASSERT_EQ(kNetDone, driver_.Open(address_));
  }

  using Arrivals = std::vector<std::pair<std::string, tagEndpoint>>;
  /** The outcome of a question to which these datagrams come. */
  std::uint32_t Exchange(std::uint32_t command, Arrivals arrivals) {
    EXPECT_EQ(kNetDone, driver_.Ask(command));
    sockets_.arrivals = std::move(arrivals);
    return driver_.Take();
  }

  CScriptedSockets sockets_;
  CVirtualClock clock_;
  CLatin1Codec codec_;
  CTestThreads threads_;
  CSocketProc connection_{{sockets_, threads_, clock_, codec_}};
  CUPIQLDP driver_{connection_, 4711};
  tagNetAddress address_{1, {}};
};

TEST_F(UpiqldpTest, OnlyOneKindOfAddressIsTaken) {
  for (const std::uint32_t kind : {0U, 2U, 0xFFFFFFFFU}) {
    address_.kind = kind;
    EXPECT_EQ(kNetFailed, driver_.Open(address_)) << kind;
  }
}

TEST_F(UpiqldpTest, ItsSocketDoesNotBlockOrThereIsNone) {
  EXPECT_EQ(1U, sockets_.controls[kControlNonBlocking]);
  for (const char* failing : {"create", "control"}) {
    sockets_.failing = {failing};
    CSocketProc connection{{sockets_, threads_, clock_, codec_}};
    CUPIQLDP driver{connection, 4711};
    EXPECT_EQ(kNetFailed, driver.Open(address_)) << failing;
    EXPECT_EQ(1U, sockets_.OpenSockets()) << failing;  // the other driver's
  }
}

TEST_F(UpiqldpTest, WhatCountsAsTheAnswer) {
  const std::string state = Answer("state");
  const std::string names = Answer("names");
  const struct {
    const char* what;
    Arrivals arrivals;
    std::uint32_t result;
  } cases[] = {
      {"the answer", {{names, kPrinter}}, kNetDone},
      {"from another port", {{names, kOtherPort}}, kNetDone},
      {"nothing", {}, kNetNothingReceived},
      {"a stranger's", {{names, kStranger}}, kNetNothingReceived},
      {"a stranger's and the printer's", {{Answer("lie"), kStranger}, {names, kPrinter}}, kNetDone},
      {"a stranger's refusal first", {{"KORVAx", kStranger}, {names, kPrinter}}, kNetDone},
      {"a late copy", {{state, kPrinter}}, kNetNothingReceived},
      {"a late copy and the answer", {{state, kOtherPort}, {state, kPrinter}, {names, kPrinter}}, kNetDone},
      {"a flood", Arrivals(100, {Answer("lie"), kStranger}), kNetNothingReceived},
      {"another letter", {{"KORVAx" + std::string(8, '\0'), kPrinter}}, kNetFailed},
      {"cut off", {{"KORVAq", kPrinter}}, kNetFailed},  // and not completed by bytes of the answer before
      {"empty", {{"", kPrinter}}, kNetFailed},
  };
  for (const auto& [what, arrivals, result] : cases) {
    ASSERT_EQ(kNetDone, driver_.Open(address_));
    ASSERT_EQ(kNetDone, Exchange(kSearchState, {{state, kPrinter}, {state, kPrinter}})) << what;
    EXPECT_EQ(result, Exchange(kSearchNames, arrivals)) << what;
    EXPECT_EQ(result == kNetDone ? names : state, driver_.Answer()) << what;
  }
  EXPECT_EQ(0U, clock_.Now() - 0xFFFFF000);  // never waits
}

TEST_F(UpiqldpTest, QuestionsGoWhereTheLastAnswerOfThePrinterCameFrom) {
  EXPECT_EQ(kNetDone, Exchange(kSearchState, {{Answer("a"), kOtherPort}}));
  EXPECT_EQ((tagEndpoint{kPrinter.address, 4711}), sockets_.last_sent_to);
  sockets_.arrivals = {{Answer("a"), kPrinter}};  // dropped when the next question is asked
  EXPECT_EQ(kNetDone,
            Exchange(kSearchNames, {{Answer("b"), {kStranger.address, 99}}, {Answer("c"), kPrinter}}));
  EXPECT_EQ(kOtherPort, sockets_.last_sent_to);
  EXPECT_EQ(kNetDone,
            Exchange(kSearchNames, {{Answer("c"), kPrinter}}));  // the same answer to the same question
  EXPECT_EQ(kPrinter, sockets_.last_sent_to);
}

TEST_F(UpiqldpTest, FailedReceivesArePassedOverUntilThereAreTooMany) {
  sockets_.error = 10054;
  sockets_.failing_receives = 5;
  EXPECT_EQ(kNetDone, Exchange(kSearchState, {{Answer(), kPrinter}}));
  for (const char* failing : {"receive", "poll"}) {
    EXPECT_EQ(kNetDone, driver_.Ask(kSearchState));
    sockets_.arrivals = {{Answer(), kPrinter}};
    sockets_.failing = {failing};
    std::uint32_t result = kNetNothingReceived;
    for (int turn = 0; turn < 4; ++turn) {
      ASSERT_EQ(kNetNothingReceived, result) << failing << turn;
      result = driver_.Take();
    }
    EXPECT_EQ(kNetFailed, result) << failing;
    sockets_.failing.clear();
  }
  sockets_.failing = {"send"};
  EXPECT_EQ(kNetFailed, driver_.Ask(kSearchState));
}

TEST_F(UpiqldpTest, AnAnswerNamesTheTargetWhereItMust) {
  driver_.SetTargetMac("010203040506");
  EXPECT_EQ(kNetFailed, Exchange(kSearchState, {{Answer("\1\2\3\4\5\7"), kPrinter}}));
  EXPECT_EQ(kNetDone, Exchange(kSearchState, {{Answer("\1\2\3\4\5\6"), kPrinter}}));
}

}  // namespace
}  // namespace tavira::test
