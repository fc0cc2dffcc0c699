// The stand-in port library: the six entry points, with a printer in this process or on the network behind
// them.
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include "emulator/memory/folder_printer.h"
#include "emulator/network/network_port.h"
#include "emulator/port/exchange_log.h"
#include "emulator/port/fault_plan.h"
#include "emulator/port/ferrolink_system.h"
#include "emulator/port/port_description.h"
#include "emulator/port/port_endpoint.h"
#include "emulator/printer/text_escape.h"

namespace lxemu {
namespace {

namespace fs = std::filesystem;

// Something that the emulator itself could not do, such as allocate.
constexpr std::int32_t kInternalError = -1009;

std::uint64_t SteadyMilliseconds() {
  using std::chrono::duration_cast;
  using std::chrono::milliseconds;
  using std::chrono::steady_clock;
  return static_cast<std::uint64_t>(
      duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

fs::path MemoryFolder() {
  const fs::path chosen = EnvironmentPath("LXEMU_MEMORY");
  return chosen.empty() ? LibraryFolder() / "Ferrolink.memory" : chosen;
}

// Plain letters as they are, everything else as its code, so that any text of a host makes one readable line.
std::string Printable(const std::u16string& text) {
  std::string printable;
  for (const char16_t unit : text) {
    if (unit >= u' ' && unit <= u'~') {
      printable += static_cast<char>(unit);
    } else {
      printable += "\\u" + HexByte(static_cast<char>(unit >> 8)) + HexByte(static_cast<char>(unit & 255));
    }
  }
  return printable;
}

/// The one port of this process: the printer in it, or one on the network while a port description names it.
class CFerrolink {
 public:
  static CFerrolink& Instance() {
    static CFerrolink instance;
    return instance;
  }

  CFerrolink()
      : log_(EnvironmentPath("LXEMU_LOG")),
        printer_(MemoryFolder(), SteadyMilliseconds),
        port_(printer_.Printer(), SteadyMilliseconds) {
    UseIni();
    if (!printer_.FolderProblem().empty()) {
      log_.WriteProblem(printer_.FolderProblem());
    }
  }

  std::int32_t Initialize(const void* record) {
    if (printer_.ReadIniWhenChanged()) {
      UseIni();
    }
    const tagPortDescription description =
        record == nullptr ? tagPortDescription() : ReadPortDescription(record);
    const std::int32_t result =
        description.strings[2].empty() ? InitializeHere(record) : InitializeThere(description.strings[2]);
    log_.WriteNote("open, port type " + std::to_string(description.port_type) + ", \"" +
                   Printable(description.strings[0]) + "\", \"" + Printable(description.strings[1]) +
                   "\", \"" + Printable(description.strings[2]) + "\", data " + Escaped(description.data) +
                   ": " + std::to_string(result));
    return result;
  }

  std::int32_t Terminate() {
    LogNetworkExchange();
    return network_.IsOpen() ? network_.Close() : port_.Terminate();
  }

  std::int32_t SendData(const std::uint8_t* data, std::uint32_t size) {
    if (network_.IsOpen()) {
      return SendThere(data, size);
    }
    const std::int32_t result = port_.SendData(data, size);
    for (const tagExchange& exchange : port_.Exchanges()) {
      log_.WriteExchange(exchange);
    }
    port_.ClearLog();
    if (const std::string problem = printer_.Save(); !problem.empty()) {
      log_.WriteProblem(problem);
    }
    return result;
  }

  std::int32_t ReceiveData(std::uint8_t* buffer, std::uint32_t* size) {
    if (!network_.IsOpen()) {
      return port_.ReceiveData(buffer, size);
    }
    std::int32_t code = kPortOk;
    if (FindCallFault(port_.Faults(), buffer == nullptr ? PortCall::kPoll : PortCall::kRead, code)) {
      return code;
    }
    code = network_.Receive(buffer, size);
    if (code == kPortOk && buffer != nullptr && exchange_) {
      exchange_->RecordAnswer({reinterpret_cast<const char*>(buffer), *size});
    }
    return code;
  }

  std::int32_t ClearReceiveData() { return network_.IsOpen() ? network_.Clear() : port_.ClearReceiveData(); }

  std::mutex& Mutex() { return mutex_; }

 private:
  void UseIni() {
    port_.Faults() = printer_.Ini().faults;
    for (const std::string& problem : printer_.Ini().problems) {
      log_.WriteProblem("printer.ini: " + problem);
    }
  }

  std::int32_t InitializeHere(const void* record) {
    return network_.IsOpen() ? kPortAlreadyOpen : port_.Initialize(record);
  }

  std::int32_t InitializeThere(const std::u16string& address) {
    std::int32_t code = kPortOk;
    if (FindCallFault(port_.Faults(), PortCall::kInitialize, code)) {
      return code;
    }
    if (port_.IsOpen()) {
      return kPortAlreadyOpen;
    }
    // Other letters than ASCII stand in no address; as the escapes that they become here, they are refused.
    return network_.Open(Printable(address));
  }

  std::int32_t SendThere(const std::uint8_t* data, std::uint32_t size) {
    LogNetworkExchange();
    std::int32_t code = kPortOk;
    if (FindCallFault(port_.Faults(), PortCall::kSendData, code)) {
      return code;
    }
    code = network_.Send(data, size);
    if (code == kPortOk) {
      exchange_.emplace().RecordSent({reinterpret_cast<const char*>(data), size});
    }
    return code;
  }

  // Its answer, when there is one, arrives after the send.
  void LogNetworkExchange() {
    if (exchange_) {
      log_.WriteExchange(*exchange_);
      exchange_.reset();
    }
  }

  std::mutex mutex_;
  CExchangeLog log_;
  CFolderPrinter printer_;
  CPortEndpoint port_;
  CNetworkPort network_;
  std::optional<tagExchange> exchange_;  // on the network, not logged yet
};

template <typename Work>
std::int32_t Guarded(Work work) {
  try {
    CFerrolink& instance = CFerrolink::Instance();
    const std::lock_guard lock(instance.Mutex());
    return work(instance);
  } catch (...) {
    return kInternalError;
  }
}

}  // namespace
}  // namespace lxemu

using lxemu::CFerrolink;
using lxemu::Guarded;

extern "C" {

std::int32_t Initialize(const void* description) {
  return Guarded([&](CFerrolink& port) { return port.Initialize(description); });
}

std::int32_t Terminate() {
  return Guarded([](CFerrolink& port) { return port.Terminate(); });
}

std::int32_t SendData(const std::uint8_t* data, std::uint32_t size) {
  return Guarded([&](CFerrolink& port) { return port.SendData(data, size); });
}

std::int32_t ReceiveData(std::uint8_t* buffer, std::uint32_t* size) {
  return Guarded([&](CFerrolink& port) { return port.ReceiveData(buffer, size); });
}

std::int32_t ClearReceiveData() {
  return Guarded([](CFerrolink& port) { return port.ClearReceiveData(); });
}

// There is one port, and it has the number 0.
std::int32_t GetPortComIndex() {
  return 0;
}

}  // extern "C"
