#include "discovery/search/printer_search.h"

#include <gtest/gtest.h>

#include <future>
#include <stdexcept>

#include "search_support.h"
#include "support/allocation_faults.h"
#include "unit/discovery/network/memory_network.h"
#include "unit/discovery/network/scripted_sockets.h"

namespace tavira::test {
namespace {

using lxemu::SearchMessage;
using lxemu::tagSearchPlan;

constexpr std::uint32_t kUsb = TVMGR_SEARCH_USB;
constexpr std::uint32_t kNetwork = TVMGR_SEARCH_NETWORK;

/** A record of the host, released at the end of its life. */
struct tagHostRecord : TvmgrFoundPrinter {
  tagHostRecord() : TvmgrFoundPrinter{} {}
  ~tagHostRecord() { TvmgrFoundPrinterRelease(this); }
};

std::uint32_t CountOf(const CPrinterSearch& search, std::int32_t kind) {
  std::uint32_t count = 99;
  EXPECT_EQ(TVMGR_OK, search.GetInfo(kind, 0, nullptr, &count));
  return count;
}

/** "text1|text2|text5" of every record. */
std::vector<std::string> Listing(const CPrinterSearch& search, std::int32_t kind) {
  std::vector<std::string> lines;
  for (std::uint32_t i = 0; i < CountOf(search, kind); ++i) {
    tagHostRecord record;
    EXPECT_EQ(TVMGR_OK, search.GetInfo(kind, static_cast<std::int32_t>(i), &record, nullptr));
    EXPECT_EQ(kind, record.kind);
    std::string line;
    for (const TvmgrText text : {record.text1, record.text2, record.text5}) {
      const WideView view = ViewHostText(text);
      line.append("|").append(view.begin(), view.end());
    }
    lines.push_back(line.substr(1));
  }
  return lines;
}

tagSearchPlan PlanWith(lxemu::tagSearchMessages tagSearchPlan::*fault, SearchMessage message) {
  tagSearchPlan plan;
  (plan.*fault).Add(message);
  return plan;
}

class PrinterSearchTest : public ::testing::Test {
 protected:
  std::unique_ptr<CPrinterSearch> SearchOn(ISockets& sockets) {
    return std::make_unique<CPrinterSearch>(tagNetPlatform{sockets, threads_, clock_, codec_}, usb_);
  }
  /** Lets the clock run until the search is over. */
  void RunOut(CPrinterSearch& search, std::uint32_t speed) {
    clock_.Flow(speed);
    EXPECT_TRUE(Eventually([&] { return search.Status() == 0; }));
    clock_.Hold();
  }
  /** Time runs when a search is destroyed, whatever the test has left. */
  void Destroy(std::unique_ptr<CPrinterSearch>& search) {
    clock_.Flow(100);
    search.reset();
    clock_.Hold();
  }

  CPacedClock clock_;
  CLatin1Codec codec_;
  CTestThreads threads_;
  CListedUsb usb_;
  CScriptedSockets scripted_;
};

TEST_F(PrinterSearchTest, AUsbSearchListsTheInterfacesAfterItsTime) {
  usb_.entries = {{WidenAscii("USB\\1"), WidenAscii("path"), WidenAscii("LX-R4100"),
                   WidenAscii("MDL:LX-R4100;"), WidenAscii("LX Printer"), 0x1A2B, 7},
                  {}};
  auto search = SearchOn(scripted_);
  EXPECT_EQ(0, search->Status());
  ASSERT_EQ(TVMGR_OK, search->Start(kUsb, 1));
  EXPECT_EQ(1, search->Status());
  clock_.Advance(2980);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(1, search->Status());
  EXPECT_EQ(0U, CountOf(*search, kUsb));
  RunOut(*search, 100);
  EXPECT_EQ((std::vector<std::string>{"LX-R4100|MDL:LX-R4100;|", "||"}), Listing(*search, kUsb));
  tagHostRecord record;
  search->GetInfo(kUsb, 0, &record, nullptr);
  EXPECT_EQ(WidenAscii("path"), ViewHostText(record.text3));
  EXPECT_EQ(WidenAscii("LX Printer"), ViewHostText(record.text4));
  EXPECT_EQ(0x1A2B, record.value1);
  EXPECT_EQ(7, record.value2);

  usb_.has_memory = false;
  ASSERT_EQ(TVMGR_OUT_OF_MEMORY, search->Start(kUsb, 0));
  EXPECT_EQ(2U, CountOf(*search, kUsb));  // of the last search that ended
  EXPECT_EQ(TVMGR_OK, search->Stop(kUsb));
  EXPECT_EQ(0U, CountOf(*search, kUsb));
  Destroy(search);
}

TEST_F(PrinterSearchTest, ReadingResultsChecksItsArguments) {
  usb_.entries.resize(1);
  auto search = SearchOn(scripted_);
  ASSERT_EQ(TVMGR_OK, search->Start(kUsb, 0));
  search->Stop(kUsb);
  tagHostRecord record;
  record.value1 = 55;
  std::uint32_t count = 0;
  for (const std::int32_t kind : {2, -1, 5}) {
    EXPECT_EQ(TVMGR_BAD_ARGUMENT, search->GetInfo(kind, 0, &record, &count));
    EXPECT_EQ(TVMGR_BAD_ARGUMENT, search->GetInfo(kind, -1, &record, &count));
  }
  EXPECT_EQ(0U, count);
  EXPECT_EQ(TVMGR_OK, search->GetInfo(TVMGR_SEARCH_USB, 1, &record, &count));
  EXPECT_EQ(1U, count);
  EXPECT_EQ(55, record.value1);
  EXPECT_EQ(TVMGR_OK, search->GetInfo(TVMGR_SEARCH_USB, -1, nullptr, nullptr));
  EXPECT_THROW(search->GetInfo(TVMGR_SEARCH_USB, -1, &record, nullptr), std::invalid_argument);
  EXPECT_THROW(search->GetInfo(TVMGR_SEARCH_NETWORK, -1, &record, nullptr), std::invalid_argument);
  EXPECT_EQ(TVMGR_OK, search->GetInfo(TVMGR_SEARCH_USB, 0, &record, nullptr));
  EXPECT_EQ(0, record.value1);
  Destroy(search);
}

TEST_F(PrinterSearchTest, AnUnknownKindStillRunsItsTime) {
  auto search = SearchOn(scripted_);
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, search->Start(5, 0));
  EXPECT_EQ(1, search->Status());
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, search->Stop(7));
  EXPECT_EQ(0, search->Status());
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, search->Stop(5));
  clock_.Flow(100);
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, search->Start(6, 0));
  RunOut(*search, 100);
  Destroy(search);
}

TEST_F(PrinterSearchTest, ABroadcastThatCannotBeMadeEndsTheSearchAtOnce) {
  auto search = SearchOn(scripted_);
  for (const char* failing : {"create", "bind", "control", "broadcast", "send"}) {
    scripted_.failing = {failing};
    EXPECT_EQ(TVMGR_SEARCH_FAILED, search->Start(kNetwork, 0)) << failing;
    EXPECT_EQ(0, search->Status()) << failing;
    EXPECT_EQ(0U, scripted_.OpenSockets()) << failing;
    clock_.Flow(100);  // a worker was started all the same: the next start waits for it
  }
  scripted_.failing.clear();
  scripted_.ClearLog();
  EXPECT_EQ(TVMGR_OK, search->Start(kNetwork, 0));
  EXPECT_EQ((tagEndpoint{0xFFFFFFFF, 3289}), scripted_.last_sent_to);
  EXPECT_EQ(1U, scripted_.options["broadcast"]);
  EXPECT_EQ(1U, scripted_.Count("receive buffer"));
  EXPECT_EQ(1U, scripted_.controls[kControlNonBlocking]);
  Destroy(search);
  EXPECT_LT(1U, scripted_.Count("poll"));  // announcements are taken while it runs, not at its end only
  EXPECT_EQ(0U, scripted_.OpenSockets());
}

TEST_F(PrinterSearchTest, ANetworkSearchFindsThePrintersThatAnswerAsTheyShould) {
  tagSearchPlan named;
  named.first_name = "LX \xE9";
  named.second_name = "dock";
  tagSearchPlan incapable;
  incapable.no_capability = true;
  tagSearchPlan twice;
  tagSearchPlan moved;
  for (const auto message : {SearchMessage::kAnnouncement, SearchMessage::kState, SearchMessage::kNames}) {
    twice.twice.Add(message);
  }
  for (const auto message : {SearchMessage::kState, SearchMessage::kNames}) {
    moved.other_port.Add(message);
  }
  CMemoryNetwork printers(clock_, {
                                      moved,
                                      named,
                                      PlanWith(&tagSearchPlan::cut_short, SearchMessage::kAnnouncement),
                                      twice,
                                      incapable,
                                      PlanWith(&tagSearchPlan::wrong_letter, SearchMessage::kAnnouncement),
                                      PlanWith(&tagSearchPlan::rejected, SearchMessage::kAnnouncement),
                                      PlanWith(&tagSearchPlan::rejected, SearchMessage::kState),
                                      PlanWith(&tagSearchPlan::wrong_letter, SearchMessage::kNames),
                                      PlanWith(&tagSearchPlan::cut_short, SearchMessage::kState),
                                      PlanWith(&tagSearchPlan::cut_short, SearchMessage::kNames),
                                  });
  auto search = SearchOn(printers);
  ASSERT_EQ(TVMGR_OK, search->Start(kNetwork, 0));
  RunOut(*search, 10);
  EXPECT_EQ((std::vector<std::string>{
                "LX-R4100|printer 2|10.0.0.2",
                std::string("LX ") + static_cast<char>(0xE9) + "|dock|10.0.0.3",
                "LX-R4100|printer 5|10.0.0.5",
                "LX-|"
                "|10.0.0.12",
            }),
            Listing(*search, TVMGR_SEARCH_NETWORK));
  EXPECT_EQ(0U, CountOf(*search, TVMGR_SEARCH_USB));
  Destroy(search);
}

TEST_F(PrinterSearchTest, AStopByTheHostMakesTheResultsForGood) {
  CMemoryNetwork printers(clock_, std::vector<tagSearchPlan>(1));
  auto search = SearchOn(printers);
  const std::uint32_t start = clock_.TickCount();
  ASSERT_EQ(TVMGR_OK, search->Start(kNetwork, 0));
  clock_.Flow(10);
  EXPECT_EQ(TVMGR_OK, search->Stop(kUsb));  // of the other kind: the search goes on, the status does not
  EXPECT_EQ(0, search->Status());
  EXPECT_EQ(TVMGR_OK, search->Stop(kNetwork));
  ASSERT_EQ(1U, CountOf(*search, TVMGR_SEARCH_NETWORK));
  printers.is_silent = true;
  CAllocationFaults::Arm(1);
  EXPECT_EQ(TVMGR_OK, search->Stop(kNetwork));  // nothing is made anew
  CAllocationFaults::Disarm();

  // The next start waits for the worker, which sleeps its whole time and then stops what is stopped already.
  EXPECT_EQ(TVMGR_OK, search->Start(kNetwork, 0));
  EXPECT_LE(3000U, clock_.TickCount() - start);
  EXPECT_EQ(2, printers.Requests());                      // not asked again
  EXPECT_EQ(1U, CountOf(*search, TVMGR_SEARCH_NETWORK));  // until this one ends
  EXPECT_EQ(TVMGR_OK, search->Stop(kNetwork));
  EXPECT_EQ(0U, CountOf(*search, TVMGR_SEARCH_NETWORK));
  Destroy(search);
}

TEST_F(PrinterSearchTest, WithoutAWorkerTheHostsStopEndsTheSearch) {
  CMemoryNetwork printers(clock_, std::vector<tagSearchPlan>(300));
  auto search = SearchOn(printers);
  threads_.error = 8;
  EXPECT_EQ(TVMGR_PORT_NOT_READY, search->Start(kNetwork, 0));
  EXPECT_EQ(1, search->Status());
  EXPECT_EQ(TVMGR_OK, search->Stop(kNetwork));
  EXPECT_EQ(0, search->Status());
  EXPECT_EQ(300U, CountOf(*search, TVMGR_SEARCH_NETWORK));
  search.reset();  // there is nothing to wait for
}

TEST_F(PrinterSearchTest, AStartWaitsForTheSearchThatRuns) {
  usb_.entries.resize(1);
  auto search = SearchOn(scripted_);
  ASSERT_EQ(TVMGR_OK, search->Start(kUsb, 0));
  auto second = std::async(std::launch::async, [&] { return search->Start(6, 0); });
  EXPECT_EQ(std::future_status::timeout, second.wait_for(std::chrono::milliseconds(50)));
  EXPECT_EQ(0U, CountOf(*search, kUsb));
  clock_.Flow(10);
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, second.get());
  EXPECT_EQ(1U, CountOf(*search, kUsb));
  Destroy(search);
}

TEST_F(PrinterSearchTest, DestructionSleepsOutTheSearchButAsksNobody) {
  CMemoryNetwork printers(clock_, std::vector<tagSearchPlan>(3));
  for (const bool stopped : {false, true}) {
    auto search = SearchOn(printers);
    const std::uint32_t start = clock_.TickCount();
    ASSERT_EQ(TVMGR_OK, search->Start(kNetwork, 0));
    clock_.Flow(100);
    if (stopped) {
      EXPECT_EQ(TVMGR_OK, search->Stop(kNetwork));
    }
    search.reset();
    clock_.Hold();
    EXPECT_LE(3000U, clock_.TickCount() - start);
    EXPECT_EQ(stopped ? 6 : 0, printers.Requests());
    EXPECT_EQ(0U, printers.OpenSockets());
  }
}

TEST_F(PrinterSearchTest, QuestionsToSilentPrintersAreGivenUp) {
  for (const bool by_host : {false, true}) {
    CMemoryNetwork printers(clock_, std::vector(5, PlanWith(&tagSearchPlan::silent, SearchMessage::kState)));
    auto search = SearchOn(printers);
    ASSERT_EQ(TVMGR_OK, search->Start(kNetwork, 0));
    clock_.Flow(by_host ? 1 : 50);
    std::future<std::int32_t> stop;
    if (by_host) {
      stop = std::async(std::launch::async, [&] { return search->Stop(kNetwork); });
    }
    ASSERT_TRUE(Eventually([&] { return printers.Requests() == 5; }));
    clock_.Hold();
    const std::uint32_t start = clock_.TickCount();
    clock_.Flow(10);
    search->GiveUp();
    EXPECT_EQ(TVMGR_OK, by_host ? stop.get() : TVMGR_OK);
    Destroy(search);
    EXPECT_GT(10000U, clock_.TickCount() - start);  // not 18 s
  }
}

}  // namespace
}  // namespace tavira::test
