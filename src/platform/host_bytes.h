#pragma once

#include <cstdint>
#include <string>

namespace tavira {

/** A copy of a host's bytes; empty for a null pointer or a size below 1. Throws std::bad_alloc. */
inline std::string CopyHostBytes(const std::uint8_t* bytes, std::int64_t size) {
  if (bytes == nullptr || size < 1) {
    return {};
  }
  return std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

}  // namespace tavira
