#pragma once

#include <array>
#include <string>
#include <string_view>

#include "emulator/printer/dialect.h"
#include "emulator/printer/setting_table.h"

namespace lxemu {

/// The settings in their three copies: as they left the factory, as saved, and as they are now.
class CSettingMemory {
 public:
  CSettingMemory();

  /// Whether the key names a readable setting of this memory (the status does not).
  static bool Knows(std::string_view key) { return FindSetting(key) < kFactorySettings.size(); }

  std::string_view Current(std::string_view key) const;
  std::string_view Saved(std::string_view key) const;

  /// False: unknown key, or a prefix setting whose value is not two hexadecimal digits.
  bool SetCurrent(std::string_view key, std::string_view value);
  bool SetSaved(std::string_view key, std::string_view value);
  bool SetFactory(std::string_view key, std::string_view value);

  void Save();            ///< current to saved
  void LoadSaved();       ///< saved to current
  void RestoreFactory();  ///< factory to current

  /// The prefix characters in force, from the current copy of the prefix settings.
  tagPrefixes Prefixes() const;

 private:
  using Values = std::array<std::string, kFactorySettings.size()>;

  static bool Assign(Values& values, std::string_view key, std::string_view value);

  Values factory_;
  Values saved_;
  Values current_;
};

/// Two upper-case hexadecimal digits for a byte, as the prefix settings report it.
std::string HexByte(char byte);

}  // namespace lxemu
