// A real search among a hundred emulated printers. Only where in_namespace.sh has made a network for it: elsewhere these
// tests fail before they search.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <string>
#include <thread>

#include "tavira/TaviraManager.h"

namespace tavira::test {
namespace {

using std::chrono::milliseconds;

constexpr int kPrinters = 100;

class ManyPrintersTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(nullptr, std::getenv("TAVIRA_TEST_NETWORK")) << "run this through in_namespace.sh --many";
    TVMGR_Initialize();  // the port library is not needed
  }
  void TearDown() override { TVMGR_Terminate(); }

  /** How many printers a search finds, each with an address of its own and its name. */
  static std::size_t Search(milliseconds& elapsed) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(TVMGR_OK, TVMGR_StartSearchPrinter(TVMGR_SEARCH_NETWORK, 0));
    while (TVMGR_GetSearchPrinterStatus() == 1) {
      std::this_thread::sleep_for(milliseconds(5));
    }
    elapsed = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
    std::uint32_t count = 0;
    EXPECT_EQ(TVMGR_OK, TVMGR_GetSearchedPrinterInfo(TVMGR_SEARCH_NETWORK, 0, nullptr, &count));
    std::set<std::basic_string<TvmgrChar>> addresses;
    for (std::uint32_t i = 0; i < count; ++i) {
      TvmgrFoundPrinter printer{};
      EXPECT_EQ(TVMGR_OK, TVMGR_GetSearchedPrinterInfo(TVMGR_SEARCH_NETWORK, static_cast<std::int32_t>(i),
                                                       &printer, nullptr));
      addresses.insert(printer.text5);
      EXPECT_EQ(std::basic_string<TvmgrChar>(printer.text5), printer.text2);
      TvmgrFoundPrinterRelease(&printer);
    }
    EXPECT_EQ(count, addresses.size());
    std::cout << count << " printers in " << elapsed.count() << " ms\n";
    return count;
  }
};

TEST_F(ManyPrintersTest, AreAllFoundInLittleMoreThanTheSearchTime) {
  milliseconds elapsed{};
  EXPECT_EQ(kPrinters, static_cast<int>(Search(elapsed)));
  EXPECT_LE(milliseconds(2950), elapsed);
  EXPECT_GE(milliseconds(3500), elapsed);
}

TEST_F(ManyPrintersTest, CostTheTimeOfOneWhenAllFallSilent) {
  const char* memory = std::getenv("TAVIRA_TEST_MEMORY");
  ASSERT_NE(nullptr, memory);
  for (int i = 1; i <= kPrinters; ++i) {
    const auto folder = std::filesystem::path(memory) / ("127.0.1." + std::to_string(i));
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "printer.ini") << "[search]\nsilent = state names\n";
  }
  milliseconds elapsed{};
  EXPECT_EQ(0U, Search(elapsed));
  EXPECT_LE(milliseconds(20900), elapsed);
  EXPECT_GE(milliseconds(40000), elapsed);
}

}  // namespace
}  // namespace tavira::test
