#include "settings/setting_update.h"

#include <algorithm>

#include "command/command_builder.h"
#include "command/fixed_commands.h"
#include "command/text.h"
#include "settings/resolution_settings.h"

namespace tavira {
namespace {

constexpr int kVerificationPasses = 10;
constexpr std::uint32_t kPassIntervalMs = 500;

bool IsVerifiable(const tagSettingRecord& update) {
  return update.id != TVMGR_SETTING_ST && update.id != TVMGR_SETTING_CPC_Y;
}

}  // namespace

std::int32_t CSettingUpdate::Run(bool no_resolution_change) {
  if (!port_.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  const std::int32_t written = Write(no_resolution_change);
  if (written != TVMGR_OK) {
    return written;
  }
  if (std::any_of(store_.UpdateList().begin(), store_.UpdateList().end(),
                  [](const tagSettingRecord& update) { return IsResolutionSetting(update.id); })) {
    guard_.Invalidate();
  }
  return Verify();
}

std::int32_t CSettingUpdate::Write(bool no_resolution_change) {
  const CGuardedScope guarded(guard_, no_resolution_change);
  std::string& commands = port_.NewCommand();
  for (const tagSettingRecord& update : store_.UpdateList()) {
    AppendSetCommand(commands, update.id, update.value);
  }
  commands.append(kSaveCommand).append(kClosingCommand);
  return port_.Exchange();
}

std::int32_t CSettingUpdate::Verify() {
  for (int pass = 0; pass < kVerificationPasses; ++pass) {
    port_.Clock().Sleep(kPassIntervalMs);
    const std::int32_t result = full_load_.ReloadSettings();
    if (result != TVMGR_OK) {
      return result;
    }
    if (PrinterReportsUpdates()) {
      return TVMGR_OK;
    }
  }
  return TVMGR_NOT_CONFIRMED;
}

bool CSettingUpdate::PrinterReportsUpdates() const {
  return std::all_of(
      store_.UpdateList().begin(), store_.UpdateList().end(), [this](const tagSettingRecord& update) {
        const std::string* stored = store_.FindValue(update.id);
        return !IsVerifiable(update) ||
               EqualsIgnoringCase(stored == nullptr ? std::string_view() : *stored, update.value);
      });
}

}  // namespace tavira
