#include "settings/full_load.h"

namespace tavira {

std::int32_t CFullLoad::LoadEverything() {
  std::int32_t result = loader_.LoadAllSettings();
  if (result == TVMGR_OK) {
    result = files_.RefreshAll();
  }
  return result == TVMGR_OK ? LoadBackgroundAndResolutions() : result;
}

std::int32_t CFullLoad::ReloadSettings() {
  const std::int32_t result = loader_.LoadAllSettings();
  return result == TVMGR_OK ? LoadBackgroundAndResolutions() : result;
}

std::int32_t CFullLoad::LoadBackgroundAndResolutions() {
  const std::int32_t result = background_.Load();
  return result == TVMGR_OK ? loader_.ReloadResolutions() : result;
}

}  // namespace tavira
