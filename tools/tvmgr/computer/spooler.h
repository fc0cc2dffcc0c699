#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tvmgr {

// What the print spooler knows. Texts are UTF-8; each function ends the command when the spooler does not answer.

struct tagSpoolerPort {
  std::string name;
  std::string monitor;
  std::string description;
};

struct tagInstalledPrinter {
  std::string name;
  std::vector<std::string> ports; /**< a pooled printer has several */
  bool is_paused = false;
  bool is_off_line = false; /**< by its user, or the spooler says so */
  std::uint32_t jobs = 0;   /**< in its queue */
};

std::vector<tagSpoolerPort> SpoolerPorts();
std::vector<tagInstalledPrinter> InstalledPrinters();

/** Those of the printers that use the port. */
std::vector<const tagInstalledPrinter*> PrintersOn(const std::string& port,
                                                   const std::vector<tagInstalledPrinter>& printers);

}  // namespace tvmgr
