// Reads settings, writes one and shows the verdict, backs up, searches: with the C++ layer.
//
//   printer_sample read [PRINTER]
//   printer_sample write NUMBER VALUE [PRINTER]    for example: write 12 front 192.0.2.7
//   printer_sample backup FILE [PRINTER]
//   printer_sample search
//
// PRINTER: an address of the network or a port of the print spooler ("USB001").
// Exit code: 0 done, 1 failed or not confirmed, 2 wrong usage.
#include <tavira/manager.hpp>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using tavira::Manager;
using tavira::Setting;

/// An argument of the command line, or any other text in the system's narrow encoding.
std::wstring Wide(const std::string& text) {
  std::wstring wide(text.size() + 1, L'\0');
  const std::size_t length = std::mbstowcs(wide.data(), text.c_str(), wide.size());
  wide.resize(length == static_cast<std::size_t>(-1) ? 0 : length);
  return wide;
}

std::string Narrow(const std::wstring& wide) {
  std::string text(wide.size() * 4 + 1, '\0');
  const std::size_t length = std::wcstombs(text.data(), wide.c_str(), text.size());
  return length == static_cast<std::size_t>(-1) ? "(not printable)" : text.substr(0, length);
}

std::string Shown(const Manager& manager, Setting setting) {
  return manager.Value(setting).value_or("(not answered)");
}

/// Chooses the printer and asks whether it is there, before anything waits for it.
void Connect(Manager& manager, const std::string& printer) {
  if (printer.empty()) {
    manager.ChooseDefault();
  } else if (printer.find('.') != std::string::npos) {
    manager.ChooseAddress(Wide(printer));
  } else {
    manager.ChoosePort(Wide(printer));
  }
  if (manager.PrinterStatus() == TVMGR_STATUS_UNKNOWN) {
    throw std::runtime_error("the printer does not answer");
  }
}

int Read(Manager& manager) {
  manager.Load();
  std::printf("resolutions: %s, %s, %s\n", Shown(manager, TVMGR_SETTING_CLR_Z).c_str(),
              Shown(manager, TVMGR_SETTING_CLR_P).c_str(), Shown(manager, TVMGR_SETTING_CLR_R).c_str());
  for (const std::wstring& name : manager.Files(TVMGR_LIST_PNG)) {
    std::printf("graphic: %s\n", Narrow(name).c_str());
  }
  return 0;
}

int Write(Manager& manager, Setting setting, const std::string& value) {
  try {
    manager.Update(setting, value);
  } catch (const tavira::Error& error) {
    if (error.Code() != TVMGR_NOT_CONFIRMED) {
      throw;
    }
    std::printf("not confirmed: sent %s, the printer shows %s\n", value.c_str(),
                Shown(manager, setting).c_str());
    return 1;
  }
  std::printf("confirmed: the printer shows %s\n", Shown(manager, setting).c_str());
  return 0;
}

int Backup(Manager& manager, const std::string& path) {
  manager.Backup(Wide(path));
  std::printf("backed up\n");
  return 0;
}

int Search(Manager& manager) {
  const auto printers = manager.Search(TVMGR_SEARCH_NETWORK);
  for (const tavira::FoundPrinter& printer : printers) {
    std::printf("%s: %s, %s\n", Narrow(printer.address).c_str(), Narrow(printer.name).c_str(),
                Narrow(printer.identification).c_str());
  }
  std::printf("printers: %u\n", static_cast<unsigned>(printers.size()));
  return 0;
}

int Run(const std::vector<std::string>& arguments) {
  const std::string command = arguments.empty() ? "" : arguments[0];
  const std::size_t needed = command == "write" ? 3 : command == "backup" ? 2 : 1;
  if ((command != "read" && command != "write" && command != "backup" && command != "search") ||
      arguments.size() < needed || arguments.size() > needed + (command == "search" ? 0 : 1) ||
      (command == "write" && (arguments[1].find_first_not_of("0123456789") != std::string::npos ||
                              std::atoi(arguments[1].c_str()) <= 0))) {
    std::fputs("usage: printer_sample read|write NUMBER VALUE|backup FILE [PRINTER], or search\n", stderr);
    return 2;
  }
  Manager manager;
  if (command == "search") {
    return Search(manager);
  }
  Connect(manager, arguments.size() > needed ? arguments[needed] : "");
  if (command == "read") {
    return Read(manager);
  }
  return command == "backup"
             ? Backup(manager, arguments[1])
             : Write(manager, static_cast<Setting>(std::atoi(arguments[1].c_str())), arguments[2]);
}

}  // namespace

int main(int count, char** arguments) {
  std::setlocale(LC_ALL, "");
  try {
    return Run({arguments + 1, arguments + count});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
