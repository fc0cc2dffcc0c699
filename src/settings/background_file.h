#pragma once

#include <cstdint>

#include "settings/setting_store.h"
#include "storage/registered_files.h"
#include "storage/stored_data.h"

namespace tavira {

/** The printer's default background, which the host reads like a setting (identifier 37). */
class CBackgroundFile {
 public:
  CBackgroundFile(const CRegisteredFiles& files, CStoredData& stored_data, CSettingStore& store)
      : files_(files), stored_data_(stored_data), store_(store) {}

  /**
   * Fetches the file when list 36 names it, and stores its bytes, or none, under identifier 37. 0 also when
   * there is no memory for a new record; else the fetch's result, with nothing stored.
   */
  std::int32_t Load();

 private:
  const CRegisteredFiles& files_;
  CStoredData& stored_data_;
  CSettingStore& store_;
};

}  // namespace tavira
