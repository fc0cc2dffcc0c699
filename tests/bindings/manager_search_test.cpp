// A real broadcast. Only where in_namespace.sh has made a network for it: elsewhere these tests fail before they search.
#include <gmock/gmock.h>

#include <cstdlib>

#include "system/emulator_folder.h"
#include "tavira/manager.hpp"

namespace tavira::test {
namespace {

using std::chrono::milliseconds;
using testing::UnorderedElementsAre;

class ManagerSearchTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(nullptr, std::getenv("TAVIRA_TEST_NETWORK")) << "run this through in_namespace.sh";
    static const CEmulatorFolder folder;
    manager_.emplace();
  }

  std::optional<Manager> manager_;
};

std::vector<std::wstring> Addresses(const std::vector<FoundPrinter>& printers) {
  std::vector<std::wstring> addresses;
  for (const FoundPrinter& printer : printers) {
    addresses.push_back(printer.address);
  }
  return addresses;
}

TEST_F(ManagerSearchTest, FindsThePrintersOfTheNetworkAndTalksToOne) {
  milliseconds last{};
  const auto printers = manager_->Search(TVMGR_SEARCH_NETWORK, [&](milliseconds elapsed) {
    last = elapsed;
    return true;
  });
  EXPECT_LE(milliseconds(2500), last);
  ASSERT_THAT(Addresses(printers), UnorderedElementsAre(L"127.0.0.2", L"127.0.0.3", L"127.0.0.4"));
  for (const FoundPrinter& printer : printers) {
    EXPECT_EQ(TVMGR_SEARCH_NETWORK, printer.kind);
    EXPECT_EQ(L"LX-R4100", printer.name);
    if (printer.address == L"127.0.0.3") {
      EXPECT_EQ(L"Dock 3", printer.identification);
      manager_->Choose(printer);
    }
  }
  EXPECT_EQ(TVMGR_STATUS_IDLE, manager_->PrinterStatus());
  manager_->Load();
  EXPECT_EQ("300", manager_->Value(TVMGR_SETTING_CLR_Z));
}

TEST_F(ManagerSearchTest, EndsWhenItIsToldTo) {
  const auto start = std::chrono::steady_clock::now();
  const auto printers = manager_->Search(TVMGR_SEARCH_NETWORK,
                                         [](milliseconds elapsed) { return elapsed < milliseconds(500); });
  EXPECT_GT(milliseconds(2500), std::chrono::steady_clock::now() - start);
  EXPECT_EQ(3U, printers.size());
  const auto stop = [](milliseconds) -> bool { throw std::runtime_error("no more"); };
  EXPECT_THROW(manager_->Search(TVMGR_SEARCH_NETWORK, stop), std::runtime_error);
  EXPECT_FALSE(manager_->IsSearching());
}

}  // namespace
}  // namespace tavira::test
