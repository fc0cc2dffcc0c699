#include "settings/setting_store.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>

#include "platform/fail_fast.h"

namespace tavira {
namespace {

/** The first record of a setting in a list, const or not; null when there is none. */
template <typename TList>
auto FindRecord(TList& records, std::uint32_t id) {
  const auto record = std::find_if(records.begin(), records.end(),
                                   [id](const tagSettingRecord& candidate) { return candidate.id == id; });
  return record == records.end() ? nullptr : &*record;
}

}  // namespace

const std::string* CSettingStore::FindValue(std::uint32_t id) const {
  const tagSettingRecord* record = FindRecord(values_, id);
  return record == nullptr ? nullptr : &record->value;
}

bool CSettingStore::CopyValue(std::uint32_t id, std::uint8_t* buffer, std::int32_t* length) const {
  const std::string* value = length == nullptr ? nullptr : FindValue(id);
  if (value == nullptr) {
    return false;
  }
  if (buffer == nullptr) {
    *length = static_cast<std::int32_t>(value->size());
    return true;
  }
  if (value->empty()) {
    FailFast();
  }
  // The host's length counts, by contract: a silently shorter copy would leave it with bytes it never got.
  std::memcpy(buffer, value->data(), static_cast<std::size_t>(*length));
  return true;
}

void CSettingStore::RefreshValues(std::vector<tagSettingRecord> records) {
  // An index, because a faulty printer may have filled both sides with any number of records.
  std::unordered_map<std::uint32_t, std::string*> first_values;
  for (tagSettingRecord& stored : values_) {
    first_values.try_emplace(stored.id, &stored.value);
  }
  for (tagSettingRecord& fresh : records) {
    if (const auto stored = first_values.find(fresh.id); stored != first_values.end()) {
      *stored->second = std::move(fresh.value);
    }
  }
}

void CSettingStore::PutValue(std::uint32_t id, std::string value) {
  if (tagSettingRecord* stored = FindRecord(values_, id)) {
    stored->value = std::move(value);
  } else {
    values_.push_back({id, std::move(value)});
  }
}

}  // namespace tavira
