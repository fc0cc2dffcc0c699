#include <sys/resource.h>

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

#include "bench/module/emulated_port.h"
#include "bench/module/module_bench.h"
#include "bench/module/scratch_file.h"
#include "bench/support/allocations.h"
#include "manager/tavira_manager.h"
#include "storage/base64.h"

namespace tavira::bench {
namespace {

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

/** Answers every question with the same text. */
class CAnsweringPort final : public CSilentPort {
 public:
  explicit CAnsweringPort(std::string answer) : answer_(std::move(answer)) {}
  std::int32_t ReceiveData(std::uint8_t* buffer, std::uint32_t* size) override {
    *size = static_cast<std::uint32_t>(answer_.size());
    if (buffer != nullptr) {
      std::copy(answer_.begin(), answer_.end(), buffer);
    }
    return 0;
  }
  std::size_t AnswerSize() const { return answer_.size(); }

 private:
  std::string answer_;
};

void MeasureFetchMemory() {
  constexpr std::size_t kSize = 64 * kMebibyte;
  CInstantClock clock;
  CAnsweringPort port("~DYE:A.PNG,B,P,50331648,0,:B64:" + std::string(kSize, 'x') + ":A1B2");
  CTaviraManager manager(MakeBenchPlatform(clock, port));
  Require(manager.Start());
  const WideString name = WidenAscii("A.PNG");
  const tagAllocations asked =
      CountAllocations([&] { Require(manager.LoadStoredData(name.c_str(), 0, kDefaultTimeoutMs)); });
  const double needed = static_cast<double>(port.AnswerSize() + LargestDecodedSize(kSize));
  ReportQuotient("P4", "memory asked for to fetch 64 MiB", static_cast<double>(asked.bytes) / kMebibyte,
                 "answer + data", needed / kMebibyte, "MiB", 1.05);
}

/** Notes when a whole file comes, and drops it. */
class CRestorePort final : public CSilentPort {
 public:
  std::int32_t SendData(const std::uint8_t*, std::uint32_t size) override {
    if (size > kMebibyte) {
      sent_at_ = Now(ETime::kCpu);
    }
    return 0;
  }
  double SentAt() const { return sent_at_; }

 private:
  double sent_at_ = 0;
};

double PeakMebibytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

void MeasureRestorePreparation() {
  constexpr std::size_t kSize = 1024 * kMebibyte;
  constexpr int kTurns = 5;
  const CScratchFile file("tavira_bench_restore.bak");
  file.Fill(kSize);
  CInstantClock clock;
  CRestorePort port;
  CTaviraManager manager(MakeBenchPlatform(clock, port));
  Require(manager.Start());
  const double peak_before = PeakMebibytes();
  std::vector<tagComparison> turns;
  for (int turn = 0; turn < kTurns; ++turn) {
    const double start = Now(ETime::kCpu);
    Require(manager.Restore(file.Path().c_str()));
    const double ours = port.SentAt() - start;
    if (turn == 0) {
      ReportQuotient("P10", "peak memory of a restore of 1 GiB", PeakMebibytes() - peak_before,
                     "file + 16 MiB", 1024 + 16, "MiB", 1);
    }
    const double peer_start = Now(ETime::kCpu);
    file.Read([](std::string_view bytes) { Keep(bytes.data()); });
    const double peer = Now(ETime::kCpu) - peer_start;
    turns.push_back({ours, peer, ours / peer});
  }
  std::sort(turns.begin(), turns.end(), [](const auto& a, const auto& b) { return a.ratio < b.ratio; });
  ReportWithin("P10", "restore of 1 GiB until it is sent", "bare read", turns[kTurns / 2], 1.3);
}

/** Processor time of a transfer: whole, and without what the printer in software took of it. */
struct tagTransferTime {
  double whole = 1e18;
  double ours = 1e18;

  /** The better of two in each: these are long, and noise only ever adds. */
  void Improve(const tagTransferTime& other) {
    whole = std::min(whole, other.whole);
    ours = std::min(ours, other.ours);
  }
};

tagTransferTime TimeTransfer(CEmulatedPort& port, const std::function<std::int32_t()>& transfer) {
  port.TakePrinterTime();
  const double start = Now(ETime::kCpu);
  Require(transfer());
  const double whole = Now(ETime::kCpu) - start;
  return {whole, whole - port.TakePrinterTime()};
}

void ReportTransfer(const std::string& work, const tagTransferTime& took, double bare, double goal) {
  ReportAside("P14", work + ", with the printer's part", "bare copy", {took.whole, bare, took.whole / bare});
  ReportWithin("P14", work, "bare copy", {took.ours, bare, took.ours / bare}, goal);
}

void StoreFiles(lxemu::CPrinter& printer) {
  std::mt19937_64 random(11);
  for (const char name : {'0', '1', '2', '3', '4', '5', '6', '7'}) {
    std::string bytes(8 * kMebibyte, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
    printer.PutFile(std::string("E:FILE") + name + ".PNG", std::move(bytes));
  }
}

void MeasureBackupAndRestore() {
  constexpr int kTurns = 3;
  CInstantClock clock;
  CEmulatedPort port;
  StoreFiles(port.Printer());
  CTaviraManager manager(MakeBenchPlatform(clock, port));
  Require(manager.Start());
  Require(manager.LoadSetting(true, 0));
  const CScratchFile file("tavira_bench_transfer.bak");
  const CScratchFile copy("tavira_bench_copy.bak");
  const WideString path = file.Path();
  TvmgrBackupInfo info{};
  info.path = path.c_str();
  info.settings = 1;
  info.section_i = 1;
  Require(manager.UpdateBackupInfo(&info));
  tagTransferTime backup;
  tagTransferTime restore;
  double bare = 1e18;
  for (int turn = 0; turn < kTurns; ++turn) {
    backup.Improve(TimeTransfer(port, [&] { return manager.Backup(0); }));
    restore.Improve(TimeTransfer(port, [&] { return manager.Restore(path.c_str()); }));
    file.Read([&](std::string_view bytes) {
      const double start = Now(ETime::kCpu);
      copy.Write(bytes);
      bare = std::min(bare, Now(ETime::kCpu) - start);
    });
  }
  ReportTransfer("backup of 8 x 8 MiB", backup, bare, 3);
  ReportTransfer("restore of 8 x 8 MiB", restore, bare, 2);
}

}  // namespace

void MeasureTransfers() {
  MeasureRestorePreparation();  // first: it looks at the peak of the process's memory
  MeasureFetchMemory();
  MeasureBackupAndRestore();
}

}  // namespace tavira::bench
