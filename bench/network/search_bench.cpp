// Searches the network that this process is in, and reports how long that took and what it found.
//
// Usage: bench_search PRINTERS GOAL_SECONDS
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "bench/support/measure.h"
#include "manager/tavira_manager.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: bench_search PRINTERS GOAL_SECONDS\n", stderr);
    return 2;
  }
  const auto expected = static_cast<std::uint32_t>(std::atoi(argv[1]));
  tavira::CTaviraManager manager(tavira::MakePlatform());
  const double start = tavira::bench::Now(tavira::bench::ETime::kWall);
  if (manager.StartSearchPrinter(TVMGR_SEARCH_NETWORK, 0) != TVMGR_OK) {
    std::fputs("the search could not be started\n", stderr);
    return 1;
  }
  while (manager.GetSearchPrinterStatus() == 1) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  const double seconds = (tavira::bench::Now(tavira::bench::ETime::kWall) - start) / 1e9;
  std::uint32_t found = 0;
  manager.GetSearchedPrinterInfo(TVMGR_SEARCH_NETWORK, 0, nullptr, &found);
  if (found != expected) {
    std::fprintf(stderr, "%u of %u printers were found\n", found, expected);
    return 1;
  }
  tavira::bench::ReportFigure("P11", "network search, " + std::to_string(found) + " printers", seconds, "s",
                              std::atof(argv[2]));
  return 0;
}
