#include "backup_file/settings_order.h"

#include <algorithm>

namespace tvmgr {

std::string_view CSettingsOrder::Take(std::string_view key, bool has_value) {
  const auto* const found = std::find(kBackupSettings.begin(), kBackupSettings.end(), key);
  if (found == kBackupSettings.end()) {
    return "no backup holds such a setting";
  }
  const auto place = static_cast<std::size_t>(found - kBackupSettings.begin());
  const bool was_there = states_[place] != EState::kMissing;
  const bool is_late = place < next_;
  states_[place] = has_value ? EState::kThere : EState::kEmpty;
  next_ = std::max(next_, place + 1);
  return was_there ? "it stands there more than once"
         : is_late ? "it stands at another place than in a backup"
                   : "";
}

std::string CSettingsOrder::Missing() const {
  return Listed(EState::kMissing);
}

std::string CSettingsOrder::WithoutValue() const {
  return Listed(EState::kEmpty);
}

std::string CSettingsOrder::Listed(EState state) const {
  constexpr std::size_t kLongestList = 10;
  std::string text;
  std::size_t count = 0;
  for (std::size_t i = 0; i < states_.size(); ++i) {
    if (states_[i] == state && ++count <= kLongestList) {
      text.append(text.empty() ? "" : " ").append(kBackupSettings[i]);
    }
  }
  return count <= kLongestList ? text : text + " and " + std::to_string(count - kLongestList) + " more";
}

}  // namespace tvmgr
