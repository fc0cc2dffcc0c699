#include "emulator/network/network_program.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "emulator/network/printer_server.h"
#include "emulator/network/socket.h"

namespace lxemu {
namespace {

namespace fs = std::filesystem;

constexpr int kExitNoSockets = 1;
constexpr int kExitUsage = 2;

struct tagArguments {
  std::vector<std::string> printers;
  std::string memory = "lxemu_network.memory";
  std::string listen = "0.0.0.0";
  std::string log;
  std::uint16_t command_port = 9100;
  std::uint16_t search_port = 3289;
  std::optional<double> seconds;
};

fs::path PathOf(const std::string& utf8) {
  return {std::u8string(utf8.begin(), utf8.end())};
}

std::string Utf8(const fs::path& path) {
  const std::u8string text = path.generic_u8string();
  return {text.begin(), text.end()};
}

void Describe(CLI::App& program, tagArguments& arguments) {
  program
      .add_option("--printer", arguments.printers,
                  "ADDRESS or ADDRESS:NAME of a printer; once for each (IPv4 address of this machine, for "
                  "example 127.0.0.2)")
      ->required()
      ->allow_extra_args(false);
  program
      .add_option("--memory", arguments.memory,
                  "folder with one folder for each printer, named by its address")
      ->capture_default_str();
  program.add_option("--port", arguments.command_port, "TCP port for commands; 0: any free one")
      ->capture_default_str();
  program.add_option("--search-port", arguments.search_port, "UDP port for searches; 0: any free one")
      ->capture_default_str();
  program.add_option("--listen", arguments.listen, "IPv4 address on which broadcasts are received")
      ->capture_default_str();
  program.add_option("--log", arguments.log, "text file for one line for each exchange (appended)");
  program.add_option("--for", arguments.seconds, "ends after so many seconds")->check(CLI::Range(0.0, 1e9));
  program.set_version_flag("--version", "lxemu_network " LXEMU_VERSION);
  program.footer(
      "Prints the ports of each printer and then the line \"ready\". Ends with Ctrl-C or SIGTERM.");
}

tagNetworkPrinterOptions ReadPrinter(const std::string& text, const fs::path& memory) {
  const std::size_t colon = std::min(text.find(':'), text.size());
  const std::string address = text.substr(0, colon);
  const std::optional<std::uint32_t> ip = ParseIpv4(address);
  if (!ip || *ip == 0) {
    throw std::invalid_argument("--printer " + text + ": this is no IPv4 address that a printer can have");
  }
  const std::string_view number = std::string_view(text).substr(std::min(colon + 1, text.size()));
  if (!number.empty() && number.find_first_not_of("0123456789") == number.npos) {
    throw std::invalid_argument("--printer " + text + ": what follows the address is a name, and " +
                                std::string(number) +
                                " looks like a port; --port is the port of all printers");
  }
  const std::string name = colon < text.size() ? text.substr(colon + 1) : address;
  return {*ip, name, memory / Ipv4Text(*ip)};
}

tagServerOptions ReadOptions(const tagArguments& arguments) {
  tagServerOptions options;
  const std::optional<std::uint32_t> listen = ParseIpv4(arguments.listen);
  if (!listen) {
    throw std::invalid_argument("--listen " + arguments.listen + ": this is no IPv4 address");
  }
  options.listen_ip = *listen;
  options.command_port = arguments.command_port;
  options.search_port = arguments.search_port;
  options.log = PathOf(arguments.log);
  for (const std::string& text : arguments.printers) {
    options.printers.push_back(ReadPrinter(text, PathOf(arguments.memory)));
    const std::uint32_t ip = options.printers.back().ip;
    const bool is_taken = std::any_of(options.printers.begin(), options.printers.end() - 1,
                                      [&](const auto& other) { return other.ip == ip; });
    if (is_taken || ip == options.listen_ip) {
      throw std::invalid_argument("--printer " + text + ": this address is given twice");
    }
  }
  return options;
}

void Announce(const CPrinterServer& server) {
  for (const CNetworkPrinter& printer : server.Printers()) {
    std::cout << "printer " << Ipv4Text(printer.Options().ip) << " commands " << printer.CommandPort()
              << " search " << printer.SearchPort() << " memory " << Utf8(printer.Options().folder) << '\n';
  }
  std::cout << "broadcasts " << AddressText(server.ListenAddress()) << "\nready" << std::endl;
}

}  // namespace

int RunNetworkProgram(std::vector<std::string> arguments, const std::atomic<bool>& stop) {
  CLI::App program("LX-R4100 label printers on the network, in software.", "lxemu_network");
  tagArguments read;
  Describe(program, read);
  tagServerOptions options;
  try {
    // The parser takes them from the back.
    std::reverse(arguments.begin(), arguments.end());
    program.parse(std::move(arguments));
    options = ReadOptions(read);
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? 0 : kExitUsage;
  } catch (const std::invalid_argument& error) {
    std::cerr << error.what() << '\n';
    return kExitUsage;
  }
  CPrinterServer server(options);
  std::string problem;
  if (!server.Open(problem)) {
    std::cerr << problem << '\n';
    return kExitNoSockets;
  }
  Announce(server);
  const auto duration =
      read.seconds ? std::optional(static_cast<std::uint64_t>(*read.seconds * 1000)) : std::nullopt;
  server.Run(stop, duration);
  return 0;
}

}  // namespace lxemu
