#pragma once

#include <utility>

#include "bench/module/bench_platform.h"
#include "bench/support/measure.h"
#include "emulator/port/port_endpoint.h"
#include "emulator/printer/printer.h"

namespace tavira::bench {

/** The emulated printer, in this process, that answers at once. Sums up the time that it takes itself. */
class CEmulatedPort final : public IBenchPort {
 public:
  std::int32_t Initialize(const void* description) override { return endpoint_.Initialize(description); }
  std::int32_t Terminate() override { return endpoint_.Terminate(); }
  std::int32_t SendData(const std::uint8_t* data, std::uint32_t size) override {
    ++sends_;
    endpoint_.ClearLog();
    return Timed([&] { return endpoint_.SendData(data, size); });
  }
  std::int32_t ReceiveData(std::uint8_t* buffer, std::uint32_t* size) override {
    return Timed([&] { return endpoint_.ReceiveData(buffer, size); });
  }

  lxemu::CPrinter& Printer() { return printer_; }
  int Sends() const { return sends_; }
  /** ns of this thread's processor time since the last call of it. */
  double TakePrinterTime() { return std::exchange(printer_time_, 0); }

 private:
  template <typename Call>
  std::int32_t Timed(Call call) {
    const double start = Now(ETime::kCpu);
    const std::int32_t result = call();
    printer_time_ += Now(ETime::kCpu) - start;
    return result;
  }

  // Its clock stands still: it is never busy.
  lxemu::CPrinter printer_{[] { return std::uint64_t{0}; }};
  lxemu::CPortEndpoint endpoint_{printer_, [] { return std::uint64_t{0}; }};
  int sends_ = 0;
  double printer_time_ = 0;
};

}  // namespace tavira::bench
