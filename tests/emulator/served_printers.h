#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "emulator/network/printer_server.h"

namespace lxemu {

inline constexpr std::uint32_t kFirst = 0x7F000002;
inline constexpr std::uint32_t kSecond = 0x7F000003;

/// Two printers on the loopback, on ports that are free, with their memory in "1" and "2"; served while it lives.
class CServedPrinters {
 public:
  explicit CServedPrinters(const std::filesystem::path& folder) : server_(Options(folder)) {
    std::string problem;
    EXPECT_TRUE(server_.Open(problem)) << problem;
    thread_ = std::thread([this] { server_.Run(stop_); });
  }
  ~CServedPrinters() {
    stop_ = true;
    thread_.join();
  }
  CServedPrinters(const CServedPrinters&) = delete;
  CServedPrinters& operator=(const CServedPrinters&) = delete;

  tagSocketAddress ListenAddress() const { return server_.ListenAddress(); }
  const CNetworkPrinter& First() const { return server_.Printers().front(); }
  const CNetworkPrinter& Second() const { return server_.Printers().back(); }

 private:
  static tagServerOptions Options(const std::filesystem::path& folder) {
    tagServerOptions options;
    options.command_port = 0;
    options.search_port = 0;
    options.listen_ip = 0x7F000009;
    options.printers = {{kFirst, "first", folder / "1"}, {kSecond, "second", folder / "2"}};
    return options;
  }

  CPrinterServer server_;
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

/// Writes printer.ini in that folder, with a time of its own.
inline void WriteIni(const std::filesystem::path& folder, const std::string& text) {
  static int count = 0;
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "printer.ini", std::ios::binary) << text;
  std::filesystem::last_write_time(folder / "printer.ini", std::filesystem::file_time_type::clock::now() +
                                                               std::chrono::seconds(10 * ++count));
}

}  // namespace lxemu
