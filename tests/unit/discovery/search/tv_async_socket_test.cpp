#include "discovery/search/tv_async_socket.h"

#include <gtest/gtest.h>

#include "search_support.h"
#include "support/test_world.h"
#include "unit/discovery/network/memory_network.h"

namespace tavira::test {
namespace {

using lxemu::SearchMessage;
using lxemu::tagSearchPlan;

const std::string kAnnouncement = std::string("KORVAp\0\0\0\0\xE0\0", 12) + std::string(63, '\0') + '\2';

tagSearchPlan Silent(SearchMessage message) {
  tagSearchPlan plan;
  plan.silent.Add(message);
  return plan;
}

tagSearchPlan Late(std::uint32_t state_ms, std::uint32_t names_ms) {
  tagSearchPlan plan;
  plan.late = {0, state_ms, names_ms};
  return plan;
}

/** One search in virtual time and on one thread: broadcast, announcements, questions. */
class AsyncSocketTest : public ::testing::Test {
 protected:
  void Open(const std::vector<tagSearchPlan>& plans) {
    network_ = std::make_unique<CMemoryNetwork>(clock_, plans);
    socket_ = std::make_unique<CTVAsyncSocket>(tagNetPlatform{*network_, threads_, clock_, codec_},
                                               tagSearchNetwork{});
    ASSERT_TRUE(socket_->OpenBroadcast());
  }
  /** How many printers are found. */
  std::size_t Collect() {
    const std::uint64_t start = clock_.Now();
    EXPECT_TRUE(socket_->Collect(given_up_));
    elapsed_ = clock_.Now() - start;
    EXPECT_EQ(0U, network_->OpenSockets());
    return socket_->FoundPrinters().size();
  }

  CVirtualClock clock_;
  CLatin1Codec codec_;
  CTestThreads threads_;
  std::unique_ptr<CMemoryNetwork> network_;
  std::unique_ptr<CTVAsyncSocket> socket_;
  std::atomic<bool> given_up_{false};
  std::uint64_t elapsed_ = 0;
};

TEST_F(AsyncSocketTest, TheQuestionsTakeAsLongAsTheSlowestPrinter) {
  const tagSearchPlan good;
  const struct {
    const char* what;
    std::vector<tagSearchPlan> plans;
    std::size_t found;
    std::uint64_t time;
    std::uint64_t slack;
  } cases[] = {
      {"nobody", {}, 0, 0, 0},
      {"all answer", std::vector(100, good), 100, 0, 0},
      {"all silent", std::vector(100, Silent(SearchMessage::kState)), 0, 18000, 0},
      {"silent at the end", std::vector(100, Silent(SearchMessage::kNames)), 0, 18000, 0},
      {"late", {Late(500, 700), good, Late(900, 100)}, 3, 1200, 0},
      {"one of each",
       {Late(17999, 0), good, Silent(SearchMessage::kState), Late(17990, 17990)},
       3,
       35980,
       10},
      {"too late", {Late(18001, 0), Late(0, 18001)}, 0, 18000, 0},
  };
  for (const auto& [what, plans, found, time, slack] : cases) {
    Open(plans);
    EXPECT_EQ(found, Collect()) << what;
    EXPECT_LE(time, elapsed_) << what;
    EXPECT_GE(time + slack, elapsed_) << what;
  }
}

TEST_F(AsyncSocketTest, AFloodOfAnnouncementsIsBoundedInMemoryAndTime) {
  Open({});
  for (std::uint32_t i = 0; i < 10000; ++i) {
    network_->Deliver(kAnnouncement, 0xC0000200 + i / 2);  // each twice
  }
  EXPECT_EQ(0U, Collect());
  EXPECT_EQ(1024, network_->Requests());
  EXPECT_EQ(18000U, elapsed_);
}

TEST_F(AsyncSocketTest, AnnouncementsAreAllReadAtTheEnd) {
  Open(std::vector<tagSearchPlan>(400));
  for (std::size_t size = 0; size <= 2000; size += 20) {  // the largest ones cannot be received
    network_->Deliver(std::string(size, size % 40 == 0 ? 'K' : '\0'), 1);
  }
  network_->Deliver(kAnnouncement + std::string(1000, 0), 2);       // nor can this one
  network_->Deliver(kAnnouncement, CMemoryNetwork::kFirstAddress);  // again
  EXPECT_EQ(400U, Collect());
  EXPECT_EQ(0U, elapsed_);  // nobody else is asked
}

TEST_F(AsyncSocketTest, FailedCallsEndNothingTooEarly) {
  network_ = std::make_unique<CMemoryNetwork>(clock_, std::vector<tagSearchPlan>(30));
  network_->failing_receives = 3;
  network_->failing_polls = 5;
  socket_ = std::make_unique<CTVAsyncSocket>(tagNetPlatform{*network_, threads_, clock_, codec_},
                                             tagSearchNetwork{});
  ASSERT_TRUE(socket_->OpenBroadcast());
  EXPECT_EQ(30U, Collect());
  EXPECT_GE(100U, elapsed_);
}

TEST_F(AsyncSocketTest, WithFewSocketsThePrintersAreAskedInTurn) {
  Open(std::vector<tagSearchPlan>(50));
  network_->most_sockets = 7;
  EXPECT_EQ(50U, Collect());
  Open(std::vector(50, Silent(SearchMessage::kNames)));
  network_->most_sockets = 7;
  EXPECT_EQ(0U, Collect());
  EXPECT_EQ(36000U, elapsed_);
  Open(std::vector<tagSearchPlan>(50));
  network_->most_sockets = 0;
  EXPECT_EQ(0U, Collect());
}

TEST_F(AsyncSocketTest, ALateSecondCopyDoesNotBecomeTheName) {
  tagSearchPlan plan = Late(0, 100);
  plan.again = {0, 30, 0};
  Open({plan});
  EXPECT_EQ(1U, Collect());
  EXPECT_EQ(WidenAscii("printer 2"), socket_->FoundPrinters().at(0).text2);
}

TEST_F(AsyncSocketTest, GivenUpItFindsNothingAndAsksNobody) {
  Open(std::vector<tagSearchPlan>(3));
  given_up_ = true;
  EXPECT_FALSE(socket_->Collect(given_up_));
  EXPECT_EQ(0, network_->Requests());
  given_up_ = false;
  EXPECT_EQ(3U, Collect());
  EXPECT_EQ(3U, Collect());
  EXPECT_EQ(6, network_->Requests());  // once per search
}

}  // namespace
}  // namespace tavira::test
