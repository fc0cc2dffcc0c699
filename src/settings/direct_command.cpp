#include "settings/direct_command.h"

#include "command/fixed_commands.h"

namespace tavira {

std::int32_t SendDirectCommand(CPrinterPort& port, CResolutionGuard& guard, const std::uint8_t* data,
                               std::int32_t length, bool allow_resolution_change) {
  if (!port.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  if (data == nullptr || length < 1) {
    return TVMGR_BAD_ARGUMENT;
  }
  const CGuardedScope guarded(guard, !allow_resolution_change);
  port.NewCommand()
      .append(reinterpret_cast<const char*>(data), static_cast<std::size_t>(length))
      .append(kClosingCommand);
  return port.Exchange();
}

}  // namespace tavira
