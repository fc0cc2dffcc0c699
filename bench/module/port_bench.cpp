#include <algorithm>

#include "bench/module/emulated_port.h"
#include "bench/module/module_bench.h"
#include "link/printer_port.h"
#include "manager/tavira_manager.h"

namespace tavira::bench {
namespace {

constexpr double kNsPerMs = 1e6;
constexpr std::uint32_t kPollIntervalMs = 100;

/** The module's own time for a poll: an hour of silence on a clock that costs nothing. */
void MeasurePolls() {
  constexpr std::uint32_t kTimeoutMs = 3600000;
  CInstantClock clock;
  CSilentPort silence;
  const auto platform = MakeBenchPlatform(clock, silence);
  CPrinterPort port(platform->Clock(), platform->Modules());
  Require(port.Start());
  port.NewCommand() = "x";
  const double start = Now(ETime::kCpu);
  Require(port.Exchange(kTimeoutMs));
  const double per_poll = (Now(ETime::kCpu) - start) / (kTimeoutMs / kPollIntervalMs);
  ReportFigure("P8", "own time of a poll" + kWhere, per_poll / kNsPerMs, "ms", 0.1);
}

void MeasureTimeouts() {
  CSilentPort silence;
  const auto platform = MakeBenchPlatform(RealClock(), silence);
  CPrinterPort port(platform->Clock(), platform->Modules());
  Require(port.Start());
  double worst = 0;
  for (const std::uint32_t timeout_ms : {50U, 250U, 500U, 1000U}) {
    port.NewCommand() = "x";
    const double start = Now(ETime::kWall);
    Require(port.Exchange(timeout_ms));
    worst = std::max(worst, (Now(ETime::kWall) - start) / kNsPerMs - timeout_ms);
  }
  ReportFigure("P8", "error of a time-out" + kWhere, worst, "ms", kPollIntervalMs);
}

/** What a host does again and again. */
void RunOperations(CTaviraManager& manager) {
  Require(manager.LoadSetting(true, 0));
  Require(manager.LoadSetting(false, TVMGR_SETTING_CLR_Z));
  std::uint32_t status = 0;
  Require(manager.GetPrinterStatus(&status));
  std::uint8_t is_default = 0;
  Require(manager.IsDefaultPrefix(&is_default));
}

void MeasureLoads() {
  constexpr int kTimes = 10;
  CInstantClock clock;
  CEmulatedPort port;
  CTaviraManager manager(MakeBenchPlatform(clock, port));
  Require(manager.Start());
  const int before = LibraryLoads();
  for (int i = 0; i < kTimes; ++i) {
    RunOperations(manager);
  }
  ReportFigure("P9", "loads of a library after the first" + kWhere, LibraryLoads() - before, "", 0);
}

void MeasureFullLoad() {
  CEmulatedPort port;
  CTaviraManager manager(MakeBenchPlatform(RealClock(), port));
  Require(manager.Start());
  const double start = Now(ETime::kWall);
  Require(manager.LoadSetting(true, 0));
  const double took = Now(ETime::kWall) - start;
  ReportQuotient(
      "P13", "full load, " + std::to_string(port.Sends()) + " transactions, instant printer" + kWhere,
      took / kNsPerMs, "the waits alone", static_cast<double>(port.Sends()) * kPollIntervalMs, "ms", 1.02);
}

}  // namespace

void MeasurePort() {
  MeasurePolls();
  MeasureTimeouts();
  MeasureLoads();
  MeasureFullLoad();
}

}  // namespace tavira::bench
