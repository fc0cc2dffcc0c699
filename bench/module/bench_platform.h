#pragma once

#include <memory>

#include "platform/platform.h"

namespace tavira::bench {

/** What stands behind the port library's entry points. */
class IBenchPort {
 public:
  virtual ~IBenchPort() = default;
  virtual std::int32_t Initialize(const void* description) = 0;
  virtual std::int32_t Terminate() = 0;
  virtual std::int32_t SendData(const std::uint8_t* data, std::uint32_t size) = 0;
  virtual std::int32_t ReceiveData(std::uint8_t* buffer, std::uint32_t* size) = 0;
};

/** Takes everything and answers nothing. */
class CSilentPort : public IBenchPort {
 public:
  std::int32_t Initialize(const void*) override { return 0; }
  std::int32_t Terminate() override { return 0; }
  std::int32_t SendData(const std::uint8_t*, std::uint32_t) override { return 0; }
  std::int32_t ReceiveData(std::uint8_t*, std::uint32_t* size) override {
    *size = 0;
    return 0;
  }
};

/** Waits cost no time. */
class CInstantClock final : public IClock {
 public:
  std::uint32_t TickCount() override { return now_; }
  void Sleep(std::uint32_t ms) override { now_ += ms; }
  std::tm LocalTime() override { return {}; }

 private:
  std::uint32_t now_ = 0;
};

/** The system's own clock. */
IClock& RealClock();

/** How often a library was loaded since the program began. */
int LibraryLoads();

/** The real platform but for the clock and the port library. Both outlive it; one platform at a time. */
std::unique_ptr<IPlatform> MakeBenchPlatform(IClock& clock, IBenchPort& port);

}  // namespace tavira::bench
