#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "discovery/search/tv_async_socket.h"
#include "discovery/usb/usb_printer_source.h"
#include "emulator/network/search_answer.h"
#include "emulator/network/socket.h"
#include "platform/clock.h"
#include "platform/text_codec.h"
#include "platform/threads.h"

namespace tavira::test {

/**
 * A clock for code with threads of its own: time stands still, so that nothing happens before the test wants
 * it, until Flow; then it runs so many times faster than real time. Sleepers wake as time passes them.
 */
class CPacedClock final : public IClock {
 public:
  std::uint32_t TickCount() override;
  void Sleep(std::uint32_t ms) override;
  std::tm LocalTime() override { return {}; }

  void Advance(std::uint32_t ms);
  void Flow(std::uint32_t speed);
  /** Time stands still again. */
  void Hold() { Flow(0); }

 private:
  using RealClock = std::chrono::steady_clock;
  std::uint64_t Now() const;

  std::mutex lock_;
  std::condition_variable changed_;
  std::uint64_t base_ms_ = 0xFFFFF000;  // wraps in 32 bits after four seconds
  std::uint32_t speed_ = 0;
  RealClock::time_point flows_since_;
};

/** True when the condition came true within ten seconds of real time. */
bool Eventually(const std::function<bool()>& condition);

class CLatin1Codec final : public ITextCodec {
 public:
  std::string ToAnsi(WideView text) override;
  WideString FromAnsi(std::string_view bytes) override;
};

/** Real threads, as long as there are any to be had. */
class CTestThreads final : public IThreads {
 public:
  std::unique_ptr<IThread> Start(std::function<void()> body, std::uint32_t& code) override {
    code = error;
    return error == 0 ? real_->Start(std::move(body), code) : nullptr;
  }
  std::atomic<std::uint32_t> error{0}; /**< not 0: there are none */

 private:
  const std::unique_ptr<IThreads> real_ = MakeThreads();
};

/** USB printers of the test's own; each call gives what is listed at that time, while there is memory. */
class CListedUsb final : public IUsbPrinterSource {
 public:
  std::vector<tagUsbRawEntry> Enumerate() override { return has_memory ? entries : throw std::bad_alloc(); }
  std::vector<tagUsbRawEntry> entries;
  bool has_memory = true;
};

/** An emulated printer on the loopback address, served by a thread; what it gets counts as broadcast too. */
class CLoopbackPrinter {
 public:
  CLoopbackPrinter();
  ~CLoopbackPrinter();
  CLoopbackPrinter(const CLoopbackPrinter&) = delete;
  CLoopbackPrinter& operator=(const CLoopbackPrinter&) = delete;

  /** For a search that is to find it: no real broadcast is sent. */
  tagSearchNetwork Network() const { return {0x7F000001, socket_.LocalAddress().port}; }

  /** How many datagrams it has answered. */
  int Answered() const { return answered_; }

 private:
  void Run();

  std::string problem_;
  const lxemu::CSocket socket_;
  std::atomic<int> answered_{0};
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

}  // namespace tavira::test
