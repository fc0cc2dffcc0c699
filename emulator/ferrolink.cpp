// The stand-in port library: the six entry points, with a printer in this process behind them.
#include <windows.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>

#include "exchange_log.h"
#include "memory_folder.h"
#include "port_endpoint.h"
#include "printer.h"
#include "printer_ini.h"
#include "text_escape.h"

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

// From Windows itself: the C run-time's copy of the environment misses what the host set after its start.
std::wstring Environment(const wchar_t* name) {
  std::wstring value(GetEnvironmentVariableW(name, nullptr, 0), L'\0');
  value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
  return value;
}

fs::path ModuleFolder() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&SteadyMilliseconds), &module);
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
  return fs::path(path).parent_path();
}

fs::path MemoryFolder() {
  const std::wstring chosen = Environment(L"LXEMU_MEMORY");
  return chosen.empty() ? ModuleFolder() / "Ferrolink.memory" : fs::path(chosen);
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

/// The one port of this process: a printer, its memory folder and its log.
class CFerrolink {
 public:
  static CFerrolink& Instance() {
    static CFerrolink instance;
    return instance;
  }

  CFerrolink()
      : folder_(MemoryFolder()),
        log_(Environment(L"LXEMU_LOG")),
        memory_(folder_),
        printer_(SteadyMilliseconds),
        port_(printer_, SteadyMilliseconds) {
    ReadIniWhenChanged();
    printer_.State().settings.RestoreFactory();
    printer_.State().settings.Save();
    memory_.Load(printer_);
  }

  std::int32_t Initialize(const void* description) {
    ReadIniWhenChanged();
    const std::int32_t result = port_.Initialize(description);
    log_.WriteNote("open, port type " + std::to_string(port_.LastPortType()) + ", \"" +
                   Printable(port_.LastString(1)) + "\", \"" + Printable(port_.LastString(2)) + "\", \"" +
                   Printable(port_.LastString(3)) + "\", data " + Escaped(port_.LastData()) + ": " +
                   std::to_string(result));
    return result;
  }

  std::int32_t SendData(const std::uint8_t* data, std::uint32_t size) {
    const std::int32_t result = port_.SendData(data, size);
    for (const tagExchange& exchange : port_.Exchanges()) {
      log_.WriteExchange(exchange);
    }
    port_.ClearLog();
    if (!memory_.Save(printer_)) {
      log_.WriteNote("the memory folder could not be written");
    }
    return result;
  }

  CPortEndpoint& Port() { return port_; }
  std::mutex& Mutex() { return mutex_; }

 private:
  // Looked at with every opening, so that faults can be arranged while the host runs.
  void ReadIniWhenChanged() {
    const fs::path path = folder_ / "printer.ini";
    std::error_code error;
    std::optional<fs::file_time_type> time = fs::last_write_time(path, error);
    if (error) {
      time.reset();
    }
    if (is_ini_read_ && time == ini_time_) {
      return;
    }
    is_ini_read_ = true;
    ini_time_ = time;
    const tagPrinterIni ini = ReadPrinterIni(ReadHostFile(path).value_or(std::string()));
    ApplyIni(ini, printer_);
    port_.Faults() = ini.faults;
    for (const std::string& problem : ini.problems) {
      log_.WriteNote("printer.ini: " + problem);
    }
  }

  std::mutex mutex_;
  fs::path folder_;
  CExchangeLog log_;
  CMemoryFolder memory_;
  CPrinter printer_;
  CPortEndpoint port_;
  bool is_ini_read_ = false;
  std::optional<fs::file_time_type> ini_time_;
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
  return Guarded([](CFerrolink& port) { return port.Port().Terminate(); });
}

std::int32_t SendData(const std::uint8_t* data, std::uint32_t size) {
  return Guarded([&](CFerrolink& port) { return port.SendData(data, size); });
}

std::int32_t ReceiveData(std::uint8_t* buffer, std::uint32_t* size) {
  return Guarded([&](CFerrolink& port) { return port.Port().ReceiveData(buffer, size); });
}

std::int32_t ClearReceiveData() {
  return Guarded([](CFerrolink& port) { return port.Port().ClearReceiveData(); });
}

// The one printer of this process has the number 0.
std::int32_t GetPortComIndex() {
  return 0;
}

}  // extern "C"
