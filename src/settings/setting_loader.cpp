#include "settings/setting_loader.h"

#include "command/answer_parser.h"
#include "command/command_builder.h"
#include "settings/resolution_settings.h"

namespace tavira {

std::int32_t CSettingLoader::LoadOne(std::int32_t id) {
  if (!port_.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  const CGuardedScope guarded(guard_, IsResolutionSetting(static_cast<std::uint32_t>(id)));
  AppendQuery(port_.NewCommand(), static_cast<std::uint32_t>(id));
  return RefreshFromPrinter();
}

std::int32_t CSettingLoader::LoadAllSettings() {
  if (!port_.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  store_.ClearValues();
  const CGuardedScope guarded(guard_, false);
  AppendAllQueries(port_.NewCommand());
  const std::int32_t result = port_.Exchange();
  if (result == TVMGR_OK) {
    store_.ReplaceValues(ScanAnswers(port_.Answer()));
  }
  return result;
}

std::int32_t CSettingLoader::LoadByList(bool flag) {
  if (!port_.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  const CGuardedScope guarded(guard_, !flag);
  std::string& commands = port_.NewCommand();
  for (const std::uint32_t id : store_.LoadList()) {
    AppendQuery(commands, id);
  }
  return RefreshFromPrinter();
}

std::int32_t CSettingLoader::ReloadResolutions() {
  store_.ClearLoadList();
  for (const std::uint32_t id : kResolutionSettings) {
    store_.AppendToLoadList(id);
  }
  return LoadByList(false);
}

std::int32_t CSettingLoader::RefreshFromPrinter() {
  const std::int32_t result = port_.Exchange();
  if (result == TVMGR_OK) {
    store_.RefreshValues(ScanAnswers(port_.Answer()));
  }
  return result;
}

}  // namespace tavira
