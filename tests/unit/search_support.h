#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "discovery/tv_async_socket.h"
#include "discovery/usb_printer_source.h"
#include "emulator/network/socket.h"
#include "emulator/search_answer.h"
#include "platform/clock.h"
#include "platform/text_codec.h"

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

/** USB printers of the test's own; each call gives what is listed at that time. */
class CListedUsb final : public IUsbPrinterSource {
 public:
  std::vector<tagUsbRawEntry> Enumerate() override { return entries; }
  std::vector<tagUsbRawEntry> entries;
};

/**
 * Emulated printers on loopback addresses of their own, served by a thread. A datagram to the first address
 * counts as a broadcast to all of them: no real one is sent.
 */
class CLoopbackPrinters {
 public:
  struct tagMember {
    lxemu::tagSearchIdentity identity;
    lxemu::tagSearchPlan plan;
    lxemu::CSocket socket{};
  };

  /** The printers stand on 127.0.0.2, 127.0.0.3 ... in the order of the plans. */
  explicit CLoopbackPrinters(const std::vector<lxemu::tagSearchPlan>& plans);
  ~CLoopbackPrinters();
  CLoopbackPrinters(const CLoopbackPrinters&) = delete;
  CLoopbackPrinters& operator=(const CLoopbackPrinters&) = delete;

  /** For a search that is to find these printers. */
  tagSearchNetwork Network() const { return {0x7F000001, port_}; }

  /** How many broadcasts all printers have answered. */
  int Broadcasts() const { return broadcasts_; }
  /** How many requests have come to any of the printers. */
  int Requests() const { return requests_; }

  /** All printers ignore what comes from now on. */
  void FallSilent() { silent_ = true; }

  /** Sends bytes to the host that broadcast last, from the first printer's address. */
  void SendToHost(std::string_view bytes);

 private:
  bool Bind();
  void Run();
  void Answer(tagMember& member, std::string_view datagram, const lxemu::tagSocketAddress& to);

  std::vector<tagMember> members_;
  lxemu::CSocket broadcast_socket_;
  lxemu::CSocket other_port_;
  std::uint16_t port_ = 0;
  std::mutex lock_;
  lxemu::tagSocketAddress host_;
  std::atomic<int> broadcasts_{0};
  std::atomic<int> requests_{0};
  std::atomic<bool> silent_{false};
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

}  // namespace tavira::test
