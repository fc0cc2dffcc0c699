#include <vector>

#include "commands/commands.h"
#include "computer/spooler.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/record_output.h"
#include "output/text_layout.h"

namespace tvmgr {

int RunPorts(const tagGlobalOptions& global) {
  const std::vector<tagInstalledPrinter> printers = InstalledPrinters();
  CRecordOutput output(
      {{"port", "PORT"}, {"monitor", "MONITOR"}, {"description", "DESCRIPTION"}, {"printers", "PRINTERS"}});
  for (const tagSpoolerPort& port : SpoolerPorts()) {
    std::vector<std::string> names;
    std::string joined;
    for (const tagInstalledPrinter* const printer : PrintersOn(port.name, printers)) {
      joined += (joined.empty() ? "" : ", ") + printer->name;
      names.push_back(printer->name);
    }
    output.Add({tagCell::Text(port.name),
                tagCell::Text(port.monitor),
                tagCell::Text(port.description),
                {joined, names}});
  }
  global.json ? output.SetAsJson("ports") : output.PrintTable();
  if (output.IsEmpty() && !global.quiet) {
    WriteError("the print spooler has no ports\n");
  }
  return kExitDone;
}

}  // namespace tvmgr
