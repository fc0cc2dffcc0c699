#include "settings/printer_operations.h"

#include "command/command_builder.h"
#include "command/fixed_commands.h"
#include "platform/host_bytes.h"
#include "settings/ignore_outcome.h"
#include "settings/operation_table.h"

namespace tavira {
namespace {

constexpr std::uint32_t kSettleMs = 1000;
constexpr std::uint32_t kBusyTimeoutMs = 60000;
constexpr std::uint32_t kHeadMaintenanceTimeoutMs = 300000;
constexpr std::string_view kTemporarySetting42 = "T";

}  // namespace

void CPrinterOperations::SetRequest(std::uint32_t code, const std::uint8_t* data, std::int32_t length) {
  if (data != nullptr && length >= 1) {
    data_ = CopyHostBytes(data, length);
  }
  code_ = code;
}

std::int32_t CPrinterOperations::Execute() {
  if (!port_.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  if (code_ == TVMGR_OP_NONE) {
    return TVMGR_OK;
  }
  const tagPrinterOperation* operation = FindPrinterOperation(code_);
  if (operation == nullptr) {
    return TVMGR_BAD_ARGUMENT;
  }
  std::int32_t result = TVMGR_OK;
  if (operation->brackets_setting_42) {
    result = WriteSetting42(kTemporarySetting42, false);
  }
  if (result == TVMGR_OK) {
    result = SendOperation(operation->commands.empty() ? std::string_view(data_) : operation->commands);
  }
  if (result != TVMGR_OK) {
    return result;
  }
  port_.Clock().Sleep(kSettleMs);
  // A printer that is still busy, or that cannot be asked, is no failure of the operation itself.
  const std::uint32_t busy_timeout_ms =
      code_ == TVMGR_OP_HEAD_MAINTENANCE ? kHeadMaintenanceTimeoutMs : kBusyTimeoutMs;
  IgnoreOutcome([&] { status_.WaitWhileBusy(busy_timeout_ms); });
  if (operation->brackets_setting_42) {
    const std::string* stored = store_.FindValue(TVMGR_SETTING_CMP_M);
    const bool has_value = stored != nullptr && !stored->empty();
    result = WriteSetting42(has_value ? std::string_view(*stored) : kTemporarySetting42, true);
  }
  return result == TVMGR_OK ? FollowUp() : result;
}

std::int32_t CPrinterOperations::WriteSetting42(std::string_view value, bool save) {
  std::string& commands = port_.NewCommand();
  AppendSetCommand(commands, TVMGR_SETTING_CMP_M, value);
  if (save) {
    commands.append(kSaveCommand);
  }
  commands.append(kClosingCommand);
  return port_.Exchange();
}

std::int32_t CPrinterOperations::SendOperation(std::string_view commands) {
  if (commands.empty()) {
    return TVMGR_BAD_ARGUMENT;
  }
  port_.NewCommand().append(commands).append(kClosingCommand);
  return port_.Exchange();
}

std::int32_t CPrinterOperations::FollowUp() {
  if (code_ == TVMGR_OP_FACTORY_RESET) {
    guard_.Invalidate();
    port_.Clock().Sleep(kSettleMs);
    return full_load_.ReloadSettings();
  }
  if (code_ == TVMGR_OP_INITIALIZE_MEMORY) {
    port_.Clock().Sleep(kSettleMs);
    for (const std::int32_t list : {TVMGR_LIST_PNG, TVMGR_LIST_TTF, TVMGR_LIST_TTE, TVMGR_LIST_FMT,
                                    TVMGR_LIST_ZPL, TVMGR_LIST_GRF, TVMGR_LIST_BACKGROUND}) {
      const std::int32_t result = files_.Refresh(list);
      if (result != TVMGR_OK) {
        return result;
      }
    }
    return background_.Load();
  }
  return TVMGR_OK;
}

}  // namespace tavira
