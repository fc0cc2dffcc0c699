#include "transcript/port_record.h"

#include <algorithm>

namespace recorder {

std::string_view DataOf(const tagRawPortRecord& raw) {
  std::string_view data(raw.data, sizeof raw.data);
  data.remove_suffix(data.size() - (data.find_last_not_of('\0') + 1));
  return data;
}

tagRawPortRecord RawOf(const tagPortRecord& record) {
  tagRawPortRecord raw;
  raw.port_type = record.port_type;
  for (std::size_t i = 0; i < 3; ++i) {
    raw.texts[i] = record.texts[i] ? record.texts[i]->c_str() : nullptr;
  }
  std::copy_n(record.data.begin(), std::min(record.data.size(), sizeof raw.data), raw.data);
  raw.data_used = record.data_used;
  return raw;
}

}  // namespace recorder
