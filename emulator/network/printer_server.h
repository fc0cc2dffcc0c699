#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "emulator/network/network_printer.h"
#include "emulator/network/socket.h"
#include "emulator/port/exchange_log.h"

namespace lxemu {

struct tagServerOptions {
  std::vector<tagNetworkPrinterOptions> printers;
  std::uint16_t command_port = 9100;  ///< 0: any free one for each printer
  std::uint16_t search_port = 3289;   ///< likewise
  std::uint32_t listen_ip = 0;        ///< where broadcasts are received; 0: on all addresses
  std::filesystem::path log;          ///< empty: none
};

/// Network printers, served by the one thread that calls Run.
class CPrinterServer {
 public:
  /// Switches the printers on.
  explicit CPrinterServer(const tagServerOptions& options);

  /// Binds all sockets. False, with the reason, when one of them cannot be bound.
  bool Open(std::string& problem);
  /// Serves until `stop` is set (seen within 100 ms) or the time is over.
  void Run(const std::atomic<bool>& stop, std::optional<std::uint64_t> duration_ms = std::nullopt);

  const std::list<CNetworkPrinter>& Printers() const { return printers_; }
  tagSocketAddress ListenAddress() const { return listen_socket_.LocalAddress(); }

 private:
  void ReceiveBroadcasts();
  std::uint32_t WaitTime(std::uint64_t until) const;

  tagServerOptions options_;
  CExchangeLog log_;
  std::list<CNetworkPrinter> printers_;
  CSocket listen_socket_;
};

}  // namespace lxemu
