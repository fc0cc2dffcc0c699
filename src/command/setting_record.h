#pragma once

#include <cstdint>
#include <string>

namespace tavira {

/** One setting and its value: the bytes as the printer reports them or as they are to be written. */
struct tagSettingRecord {
  std::uint32_t id = 0;
  std::string value;
};

}  // namespace tavira
