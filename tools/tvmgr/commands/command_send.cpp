#include "commands/commands.h"
#include "files/host_data.h"
#include "output/command_error.h"
#include "output/json_output.h"
#include "printer/manager_session.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {

int RunSend(const tagGlobalOptions& global, const tagSendOptions& options) {
  if (!options.data.stdin_mark.empty() && options.data.stdin_mark != "-") {
    throw CUsageError("\"" + options.data.stdin_mark + "\" is neither --file, --text nor - (stdin)");
  }
  const tagPrinterChoice choice = RequireChoice(global);
  const std::string data = ReadData(options.data);
  const CManagerSession session(global, choice);
  session.RequireAnsweringPrinter();
  ReportTransfer(data.size());
  session.Require("TVMGR_DirectSendCommand", "sending " + std::to_string(data.size()) + " bytes",
                  limit::kDirectSend, [&] {
                    return TVMGR_DirectSendCommand(reinterpret_cast<const std::uint8_t*>(data.data()),
                                                   static_cast<std::int32_t>(data.size()),
                                                   options.allow_resolution_change);
                  });
  if (global.json) {
    SetJsonResult({{"bytes", data.size()}});
  }
  session.Remark("sent " + std::to_string(data.size()) + " bytes; a printer's silence does not show here");
  return kExitDone;
}

}  // namespace tvmgr
