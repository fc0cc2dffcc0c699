#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "backup_file/backup_contents.h"

namespace tvmgr {

struct tagSettingDifference {
  std::string key;
  std::optional<std::string> first; /**< none: the setting is not there */
  std::optional<std::string> second;
};

/** A file that is not the same in two backups. */
struct tagFileDifference {
  const tagBackupFile* first = nullptr; /**< null: it is not there */
  const tagBackupFile* second = nullptr;
};

struct tagBackupDifference {
  bool other_sections = false;
  std::vector<tagSettingDifference> settings;
  std::vector<tagFileDifference> files;

  bool IsEmpty() const { return !other_sections && settings.empty() && files.empty(); }
};

/** What differs, by key and by name; time stamps and the order do not count. Looks into both arguments. */
tagBackupDifference CompareBackups(const tagBackupContents& first, const tagBackupContents& second);

}  // namespace tvmgr
