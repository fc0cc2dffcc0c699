#include "backup_file/backup_difference.h"

#include <map>
#include <set>

namespace tvmgr {
namespace {

// Of files with the same name the printer keeps the last one.
std::map<std::string_view, const tagBackupFile*> FilesByName(const tagBackupContents& contents) {
  std::map<std::string_view, const tagBackupFile*> files;
  for (const tagBackupFile& file : contents.files) {
    files[file.name] = &file;
  }
  return files;
}

template <typename Map>
std::set<typename Map::key_type> KeysOfBoth(const Map& first, const Map& second) {
  std::set<typename Map::key_type> keys;
  for (const Map* const map : {&first, &second}) {
    for (const auto& [key, value] : *map) {
      keys.insert(key);
    }
  }
  return keys;
}

}  // namespace

tagBackupDifference CompareBackups(const tagBackupContents& first, const tagBackupContents& second) {
  tagBackupDifference difference;
  difference.other_sections = first.sections != second.sections;

  const auto first_values = SettingsByKey(first);
  const auto second_values = SettingsByKey(second);
  const auto value = [](const auto& values, const std::string& key) {
    const auto found = values.find(key);
    return found == values.end() ? std::nullopt : std::optional<std::string>(found->second);
  };
  for (const std::string& key : KeysOfBoth(first_values, second_values)) {
    tagSettingDifference setting{key, value(first_values, key), value(second_values, key)};
    if (setting.first != setting.second) {
      difference.settings.push_back(std::move(setting));
    }
  }

  const auto first_files = FilesByName(first);
  const auto second_files = FilesByName(second);
  const auto file = [](const auto& files, std::string_view name) {
    const auto found = files.find(name);
    return found == files.end() ? nullptr : found->second;
  };
  for (const std::string_view name : KeysOfBoth(first_files, second_files)) {
    const tagFileDifference pair{file(first_files, name), file(second_files, name)};
    if (pair.first == nullptr || pair.second == nullptr || pair.first->command != pair.second->command ||
        pair.first->is_protected != pair.second->is_protected) {
      difference.files.push_back(pair);
    }
  }
  return difference;
}

}  // namespace tvmgr
