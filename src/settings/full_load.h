#pragma once

#include <cstdint>

#include "settings/background_file.h"
#include "settings/setting_loader.h"
#include "storage/registered_files.h"

namespace tavira {

/**
 * The loads that read more than settings. Each step is as its component states; the first failure ends the
 * load.
 */
class CFullLoad {
 public:
  CFullLoad(CSettingLoader& loader, CRegisteredFiles& files, CBackgroundFile& background)
      : loader_(loader), files_(files), background_(background) {}

  /** Settings, the eight file lists, the background file, the resolution settings. */
  std::int32_t LoadEverything();

  /** Settings, the background file, the resolution settings: what a change of settings can have touched. */
  std::int32_t ReloadSettings();

 private:
  std::int32_t LoadBackgroundAndResolutions();

  CSettingLoader& loader_;
  CRegisteredFiles& files_;
  CBackgroundFile& background_;
};

}  // namespace tavira
