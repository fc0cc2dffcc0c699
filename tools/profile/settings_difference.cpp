#include "profile/settings_difference.h"

#include <algorithm>

#include "backup_file/backup_settings.h"
#include "names/setting_names.h"
#include "profile/profile_settings.h"

namespace tvmgr {
namespace {

std::optional<std::string> ValueOf(const tagSettingsSource& source, const std::string& key) {
  const auto found = source.values.find(key);
  return found == source.values.end() ? std::nullopt : std::optional(found->second);
}

bool IsCompared(const tagSettingName& setting, const tagSettingsSource& first,
                const tagSettingsSource& second, bool all) {
  const std::string key(setting.key);
  const auto any = [&](ESettingsSource kind) { return first.kind == kind || second.kind == kind; };
  const auto names = [&](ESettingsSource kind) {
    return (first.kind == kind && first.values.contains(key)) ||
           (second.kind == kind && second.values.contains(key));
  };
  if (any(ESettingsSource::kProfile)) {
    return names(ESettingsSource::kProfile);
  }
  if (!all && BelongsToDevice(setting.id)) {
    return false;
  }
  // The guard hides the mode from every reading; the other two cannot be read as settings.
  return any(ESettingsSource::kBackup)
             ? names(ESettingsSource::kBackup)
             : setting.id != TVMGR_SETTING_CMP_U && setting.id != TVMGR_SETTING_ST &&
                   setting.id != TVMGR_SETTING_BACKGROUND;
}

// Why the side has no value: it is a difference for a profile, which could have one.
tagSettingPair Judge(tagSettingPair pair, const tagSettingsSource& first, const tagSettingsSource& second) {
  if (pair.first && pair.second) {
    pair.verdict = "differs";
    return pair;
  }
  const auto is_silent = [](const tagSettingsSource& source, const std::optional<std::string>& value) {
    return source.kind == ESettingsSource::kPrinter && !value;
  };
  if (is_silent(first, pair.first) || is_silent(second, pair.second)) {
    pair.verdict = is_silent(first, pair.first)
                       ? is_silent(second, pair.second) ? "not answered" : "not answered in A"
                       : "not answered in B";
    pair.is_open = true;
    return pair;
  }
  const tagSettingsSource& without = pair.first ? second : first;
  if (without.kind == ESettingsSource::kBackup && !IsInBackups(pair.key)) {
    pair.verdict = "not in backups";
    pair.is_open = true;
    return pair;
  }
  pair.verdict = pair.first ? "only in A" : "only in B";
  return pair;
}

}  // namespace

bool tagSettingsComparison::HasDifference() const {
  return std::any_of(pairs.begin(), pairs.end(), [](const tagSettingPair& pair) { return !pair.is_open; });
}

tagSettingsComparison CompareSources(const tagSettingsSource& first, const tagSettingsSource& second,
                                     bool all) {
  tagSettingsComparison result;
  for (const tagSettingName& setting : AllSettings()) {
    if (!IsCompared(setting, first, second, all)) {
      continue;
    }
    tagSettingPair pair{std::string(setting.key), {}, {}, {}};
    pair.first = ValueOf(first, pair.key);
    pair.second = ValueOf(second, pair.key);
    const bool is_open = !pair.first && !pair.second;
    result.compared += pair.first && pair.second ? 1U : 0U;
    if (is_open || pair.first != pair.second) {
      result.pairs.push_back(Judge(std::move(pair), first, second));
    }
  }
  return result;
}

}  // namespace tvmgr
