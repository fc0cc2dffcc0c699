#include <windows.h>
// winspool.h needs windows.h before it.
#include <winspool.h>

#include <functional>
#include <vector>

#include "commands/commands.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/record_output.h"
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

struct tagPrinterPorts {
  std::string name;
  std::vector<std::string> ports;
};

std::vector<tagPrinterPorts> InstalledPrinters() {
  auto* const enum_printers = SpoolerFunction<decltype(EnumPrintersW)>("EnumPrintersW");
  std::size_t count = 0;
  const std::vector<BYTE> buffer = Enumerate(
      [=](BYTE* bytes, DWORD size, DWORD* needed, DWORD* returned) {
        return enum_printers(PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, nullptr, 2, bytes, size, needed,
                             returned);
      },
      count, "printers");
  const auto* const records = reinterpret_cast<const PRINTER_INFO_2W*>(buffer.data());
  std::vector<tagPrinterPorts> printers;
  for (std::size_t i = 0; i < count; ++i) {
    // A pooled printer names its ports in one text, with commas between them.
    tagPrinterPorts printer{Text(records[i].pPrinterName), {}};
    std::string ports = Text(records[i].pPortName);
    for (std::size_t comma = 0; comma != std::string::npos;) {
      comma = ports.find(',');
      printer.ports.push_back(ports.substr(0, comma));
      ports.erase(0, comma == std::string::npos ? comma : comma + 1);
    }
    printers.push_back(std::move(printer));
  }
  return printers;
}

}  // namespace

int RunPorts(const tagGlobalOptions& global) {
  auto* const enum_ports = SpoolerFunction<decltype(EnumPortsW)>("EnumPortsW");
  std::size_t count = 0;
  const std::vector<BYTE> buffer =
      Enumerate([=](BYTE* bytes, DWORD size, DWORD* needed,
                    DWORD* returned) { return enum_ports(nullptr, 2, bytes, size, needed, returned); },
                count, "ports");
  const std::vector<tagPrinterPorts> printers = InstalledPrinters();
  const auto* const records = reinterpret_cast<const PORT_INFO_2W*>(buffer.data());
  CRecordOutput output(
      {{"port", "PORT"}, {"monitor", "MONITOR"}, {"description", "DESCRIPTION"}, {"printers", "PRINTERS"}});
  for (std::size_t i = 0; i < count; ++i) {
    const std::string port = Text(records[i].pPortName);
    std::vector<std::string> names;
    std::string joined;
    for (const tagPrinterPorts& printer : printers) {
      for (const std::string& printer_port : printer.ports) {
        if (EqualsIgnoreCase(printer_port, port)) {
          joined += (joined.empty() ? "" : ", ") + printer.name;
          names.push_back(printer.name);
        }
      }
    }
    output.Add({tagCell::Text(port),
                tagCell::Text(Text(records[i].pMonitorName)),
                tagCell::Text(Text(records[i].pDescription)),
                {joined, names}});
  }
  global.json ? output.SetAsJson("ports") : output.PrintTable();
  if (output.IsEmpty() && !global.quiet) {
    WriteError("the print spooler has no ports\n");
  }
  return kExitDone;
}

}  // namespace tvmgr
