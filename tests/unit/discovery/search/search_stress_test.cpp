// Searches under pressure from several threads; also meant for ThreadSanitizer.
#include <gtest/gtest.h>

#include "discovery/network/socket_proc.h"
#include "discovery/search/printer_search.h"
#include "search_support.h"
#include "unit/discovery/network/scripted_sockets.h"

namespace tavira::test {
namespace {

/** Reads everything that a host can ask for. */
void ReadAll(const CPrinterSearch& search) {
  EXPECT_TRUE(search.Status() == 0 || search.Status() == 1);
  for (const std::int32_t kind : {0, 1}) {
    std::uint32_t count = 0;
    TvmgrFoundPrinter record{};
    EXPECT_EQ(TVMGR_OK, search.GetInfo(kind, 0, &record, &count));
    EXPECT_GE(2U, count);
    TvmgrFoundPrinterRelease(&record);
  }
}

class SearchStressTest : public ::testing::Test {
 protected:
  SearchStressTest() { usb_.entries.resize(2); }

  const std::unique_ptr<ISockets> sockets_ = MakeSockets();
  CLoopbackPrinter printer_;
  CPacedClock clock_;
  CLatin1Codec codec_;
  CTestThreads threads_;
  CListedUsb usb_;
};

TEST_F(SearchStressTest, TwoThreadsAgainstTheWorker) {
  clock_.Flow(200);  // a search takes 15 ms
  CPrinterSearch search({*sockets_, threads_, clock_, codec_}, usb_, printer_.Network());
  constexpr int kRounds = 60;
  const auto rounds = [&](std::uint32_t first_kind) {
    for (std::uint32_t i = 0; i < kRounds; ++i) {
      const std::uint32_t kind = (first_kind + i) % 2;
      EXPECT_EQ(TVMGR_OK, search.Start(kind, i));
      ReadAll(search);
      if (i % 3 != 0) {
        EXPECT_EQ(TVMGR_OK, search.Stop(kind));
      }
      ReadAll(search);
    }
  };
  std::thread other(rounds, 1);
  rounds(0);
  other.join();
  EXPECT_TRUE(Eventually([&] { return search.Status() == 0; }));
}

TEST_F(SearchStressTest, AStartEveryTenMilliseconds) {
  clock_.Flow(100);
  CPrinterSearch search({*sockets_, threads_, clock_, codec_}, usb_, printer_.Network());
  std::atomic<bool> done{false};
  std::thread reader([&] {
    while (!done) {
      ReadAll(search);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  for (int i = 0; i < 40; ++i) {
    EXPECT_EQ(TVMGR_OK, search.Start(TVMGR_SEARCH_NETWORK, 0));
    EXPECT_LE(0, search.Status());
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_TRUE(Eventually([&] { return search.Status() == 0; }));
  done = true;
  reader.join();
  std::uint32_t count = 0;
  search.GetInfo(TVMGR_SEARCH_NETWORK, 0, nullptr, &count);
  EXPECT_EQ(1U, count);
}

TEST_F(SearchStressTest, DestructionAtAnyMoment) {
  clock_.Flow(200);
  for (int i = 0; i < 100; ++i) {
    CPrinterSearch search({*sockets_, threads_, clock_, codec_}, usb_, printer_.Network());
    EXPECT_EQ(TVMGR_OK, search.Start(static_cast<std::uint32_t>(i % 2), 0));
    std::this_thread::sleep_for(std::chrono::microseconds(i * 200));  // up to 20 ms
  }
}

TEST(ConnectorStressTest, ConnectsThatSucceedFailAndHang) {
  CPacedClock clock;
  clock.Flow(1000);  // an attempt takes 3 ms
  CLatin1Codec codec;
  CScriptedSockets sockets;
  sockets.on_connect = [](int attempt) {
    std::this_thread::sleep_for(std::chrono::microseconds(attempt * 997 % 5000));  // some longer than that
    return attempt % 4 == 0;
  };
  tagNetAddress address{};
  address.host[0] = TvmgrChar{'x'};
  int connected = 0;
  CTestThreads threads;
  CSocketProc connection({sockets, threads, clock, codec});
  connection.SetUseConnectThread(1);
  for (int i = 0; i < 20; ++i) {
    if (connection.Open(&address, kSelectorHttp) == kNetDone) {
      ++connected;
      EXPECT_EQ(1U, sockets.OpenSockets());
    }
    connection.Close(0);
    EXPECT_EQ(0U, sockets.OpenSockets());
  }
  EXPECT_LT(0, connected);
}

}  // namespace
}  // namespace tavira::test
