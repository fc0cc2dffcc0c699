#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "command/setting_record.h"

namespace tavira {

/**
 * The values read from the printer, the settings to read next and the values to write next.
 *
 * Each list keeps its insertion order and its duplicates. Appending throws std::bad_alloc and then changes
 * nothing.
 */
class CSettingStore {
 public:
  /** The first stored value of a setting; null when none is stored. */
  const std::string* FindValue(std::uint32_t id) const;

  /**
   * Hands a value to the host. `buffer` null: writes the value's length in bytes. Otherwise copies exactly
   * `*length` bytes, which must be the length asked for before; asking for the bytes of an empty value ends
   * the process. False, and nothing written, when `length` is null or nothing is stored.
   */
  bool CopyValue(std::uint32_t id, std::uint8_t* buffer, std::int32_t* length) const;

  /** Forgets all values. */
  void ClearValues() { values_.clear(); }

  /** Takes over a whole load, in answer order. */
  void ReplaceValues(std::vector<tagSettingRecord> records) { values_ = std::move(records); }

  /** Gives each record's value to the first stored one of that setting; settings not stored are dropped. */
  void RefreshValues(std::vector<tagSettingRecord> records);

  /** Sets the first stored value of a setting, or appends it. */
  void PutValue(std::uint32_t id, std::string value);

  void ClearLoadList() { load_list_.clear(); }
  void AppendToLoadList(std::uint32_t id) { load_list_.push_back(id); }
  const std::vector<std::uint32_t>& LoadList() const { return load_list_; }

  void ClearUpdateList() { update_list_.clear(); }
  void AppendToUpdateList(std::uint32_t id, std::string value) {
    update_list_.push_back({id, std::move(value)});
  }
  const std::vector<tagSettingRecord>& UpdateList() const { return update_list_; }

 private:
  std::vector<tagSettingRecord> values_;
  std::vector<std::uint32_t> load_list_;
  std::vector<tagSettingRecord> update_list_;
};

}  // namespace tavira
