#include "computer/spooler.h"

#include <windows.h>
// winspool.h needs windows.h before it.
#include <winspool.h>

#include <algorithm>
#include <functional>

#include "output/command_error.h"
#include "output/text_encoding.h"

namespace tvmgr {
namespace {

/**
 * A function of the print spooler's library. Loaded when it is needed: every start of the tool would otherwise
 * load it, and the window system with it.
 */
template <typename Function>
Function* SpoolerFunction(const char* name) {
  static const HMODULE library = LoadLibraryW(L"WINSPOOL.DRV");
  const auto function = library == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(library, name));
  if (function == nullptr) {
    throw CFailure("this system has no print spooler (Windows error " + std::to_string(GetLastError()) + ")");
  }
  return reinterpret_cast<Function*>(function);
}

std::string Text(const wchar_t* text) {
  return text == nullptr ? std::string() : ToUtf8(text);
}

// The spooler says how much room an enumeration takes; ports may come and go between the two calls.
std::vector<BYTE> Enumerate(const std::function<BOOL(BYTE*, DWORD, DWORD*, DWORD*)>& call, std::size_t& count,
                            const char* what) {
  std::vector<BYTE> buffer;
  DWORD needed = 0;
  DWORD returned = 0;
  for (int attempt = 0; attempt < 5; ++attempt) {
    if (call(buffer.data(), static_cast<DWORD>(buffer.size()), &needed, &returned)) {
      count = returned;
      return buffer;
    }
    if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
      break;
    }
    buffer.resize(needed);
  }
  throw CFailure("the print spooler does not list its " + std::string(what) + " (Windows error " +
                 std::to_string(GetLastError()) + "): check that the spooler service runs");
}

}  // namespace

std::vector<tagSpoolerPort> SpoolerPorts() {
  auto* const enum_ports = SpoolerFunction<decltype(EnumPortsW)>("EnumPortsW");
  std::size_t count = 0;
  const std::vector<BYTE> buffer =
      Enumerate([=](BYTE* bytes, DWORD size, DWORD* needed,
                    DWORD* returned) { return enum_ports(nullptr, 2, bytes, size, needed, returned); },
                count, "ports");
  const auto* const records = reinterpret_cast<const PORT_INFO_2W*>(buffer.data());
  std::vector<tagSpoolerPort> ports;
  for (std::size_t i = 0; i < count; ++i) {
    ports.push_back(
        {Text(records[i].pPortName), Text(records[i].pMonitorName), Text(records[i].pDescription)});
  }
  return ports;
}

std::vector<tagInstalledPrinter> InstalledPrinters() {
  auto* const enum_printers = SpoolerFunction<decltype(EnumPrintersW)>("EnumPrintersW");
  std::size_t count = 0;
  const std::vector<BYTE> buffer = Enumerate(
      [=](BYTE* bytes, DWORD size, DWORD* needed, DWORD* returned) {
        return enum_printers(PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, nullptr, 2, bytes, size, needed,
                             returned);
      },
      count, "printers");
  const auto* const records = reinterpret_cast<const PRINTER_INFO_2W*>(buffer.data());
  std::vector<tagInstalledPrinter> printers;
  for (std::size_t i = 0; i < count; ++i) {
    const PRINTER_INFO_2W& record = records[i];
    tagInstalledPrinter printer{Text(record.pPrinterName), {}};
    printer.is_paused = (record.Status & PRINTER_STATUS_PAUSED) != 0;
    printer.is_off_line = (record.Status & PRINTER_STATUS_OFFLINE) != 0 ||
                          (record.Attributes & PRINTER_ATTRIBUTE_WORK_OFFLINE) != 0;
    printer.jobs = record.cJobs;
    // A pooled printer names its ports in one text, with commas between them.
    std::string ports = Text(record.pPortName);
    for (std::size_t comma = 0; comma != std::string::npos;) {
      comma = ports.find(',');
      printer.ports.push_back(ports.substr(0, comma));
      ports.erase(0, comma == std::string::npos ? comma : comma + 1);
    }
    printers.push_back(std::move(printer));
  }
  return printers;
}

std::vector<const tagInstalledPrinter*> PrintersOn(const std::string& port,
                                                   const std::vector<tagInstalledPrinter>& printers) {
  std::vector<const tagInstalledPrinter*> found;
  for (const tagInstalledPrinter& printer : printers) {
    if (std::any_of(printer.ports.begin(), printer.ports.end(),
                    [&](const std::string& name) { return EqualsIgnoreCase(name, port); })) {
      found.push_back(&printer);
    }
  }
  return found;
}

}  // namespace tvmgr
