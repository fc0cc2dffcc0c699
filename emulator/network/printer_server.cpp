#include "emulator/network/printer_server.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace lxemu {
namespace {

// How long a stop can go unseen.
constexpr std::uint64_t kLongestWait = 100;

std::uint64_t SteadyMilliseconds() {
  using std::chrono::duration_cast;
  using std::chrono::milliseconds;
  using std::chrono::steady_clock;
  return static_cast<std::uint64_t>(
      duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

}  // namespace

CPrinterServer::CPrinterServer(const tagServerOptions& options) : options_(options), log_(options.log) {
  for (const tagNetworkPrinterOptions& printer : options_.printers) {
    printers_.emplace_back(printer, SteadyMilliseconds, log_);
  }
}

bool CPrinterServer::Open(std::string& problem) {
  for (CNetworkPrinter& printer : printers_) {
    if (!printer.Open(options_.command_port, options_.search_port, problem)) {
      return false;
    }
  }
  // A printer on this very address receives what comes there; the others hear of broadcasts through it no
  // more.
  listen_socket_ = CSocket::BindDatagram({options_.listen_ip, options_.search_port}, problem);
  return listen_socket_.IsOpen();
}

void CPrinterServer::Run(const std::atomic<bool>& stop, std::optional<std::uint64_t> duration_ms) {
  const std::uint64_t until = duration_ms ? SteadyMilliseconds() + *duration_ms : UINT64_MAX;
  std::vector<tagSocketWait> waits;
  while (!stop && SteadyMilliseconds() < until) {
    waits.clear();
    waits.push_back({&listen_socket_, true, false});
    for (const CNetworkPrinter& printer : printers_) {
      printer.AddWaits(waits);
    }
    WaitForSockets(waits, WaitTime(until));
    if (waits.front().is_readable) {
      ReceiveBroadcasts();
    }
    for (CNetworkPrinter& printer : printers_) {
      printer.Work(waits);
    }
  }
}

void CPrinterServer::ReceiveBroadcasts() {
  std::array<char, 2048> buffer;
  tagSocketAddress from;
  const tagTransfer received = listen_socket_.ReceiveFrom(buffer, from);
  if (received.result == SocketResult::kDone) {
    for (CNetworkPrinter& printer : printers_) {
      printer.AnswerBroadcast({buffer.data(), received.size}, from);
    }
  }
}

std::uint32_t CPrinterServer::WaitTime(std::uint64_t until) const {
  std::uint64_t next = until;
  for (const CNetworkPrinter& printer : printers_) {
    next = std::min(next, printer.DueTime().value_or(until));
  }
  const std::uint64_t now = SteadyMilliseconds();
  return static_cast<std::uint32_t>(next <= now ? 0 : std::min(next - now, kLongestWait));
}

}  // namespace lxemu
