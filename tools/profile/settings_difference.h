#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tvmgr {

/** Where settings come from: it decides which of them are compared. */
enum class ESettingsSource { kProfile, kBackup, kPrinter };

struct tagSettingsSource {
  ESettingsSource kind = ESettingsSource::kProfile;
  std::map<std::string, std::string> values; /**< bytes by key, "CLR,Z" */
};

/** A setting that is not the same in both, or could not be compared. */
struct tagSettingPair {
  std::string key;
  std::optional<std::string> first;
  std::optional<std::string> second;
  std::string verdict;  /**< "differs", "only in A", "not in backups", "not answered in B" ... */
  bool is_open = false; /**< no difference: it could not be compared */
};

struct tagSettingsComparison {
  std::vector<tagSettingPair> pairs; /**< in the order of the settings' numbers */
  std::size_t compared = 0;

  bool HasDifference() const;
};

/**
 * Compares byte by byte. What profiles name decides; without one, what backups hold, and of two printers all that can
 * be read. Of the last two, settings that belong to one device are left out unless `all`.
 */
tagSettingsComparison CompareSources(const tagSettingsSource& first, const tagSettingsSource& second,
                                     bool all);

}  // namespace tvmgr
