#pragma once

#include <cstdint>

#include "transcript/call.h"

namespace recorder {

/// The 56 bytes that a host hands to Initialize, as they lie in its memory.
struct tagRawPortRecord {
  std::int32_t port_type = 0;
  const char16_t* texts[3] = {};  ///< zero-terminated, or null
  char data[16] = {};
  std::int32_t data_used = 0;
};
static_assert(sizeof(void*) != 8 || sizeof(tagRawPortRecord) == 56);

/// The bytes of the data field without the zeros at its end.
std::string_view DataOf(const tagRawPortRecord& raw);

/// A raw record with the contents of this one, whose texts it points to.
tagRawPortRecord RawOf(const tagPortRecord& record);

}  // namespace recorder
