#pragma once

#include <array>
#include <string>
#include <string_view>

#include "backup_file/backup_settings.h"

namespace tvmgr {

/** Judges the settings of a backup one after the other: each has to stand there once and in its place. */
class CSettingsOrder {
 public:
  /** Takes the next setting; says what is wrong with it or its place, nothing when all is well. */
  std::string_view Take(std::string_view key, bool has_value);

  /** The settings that were not there, "CLM,P CLM,S and 4 more"; empty when there were all. */
  std::string Missing() const;

  /** Those that were there without a value, likewise. */
  std::string WithoutValue() const;

 private:
  enum class EState { kMissing, kEmpty, kThere };

  std::string Listed(EState state) const;

  std::array<EState, kBackupSettings.size()> states_{};
  std::size_t next_ = 0;
};

}  // namespace tvmgr
