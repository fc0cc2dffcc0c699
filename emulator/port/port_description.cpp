#include "emulator/port/port_description.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace lxemu {
namespace {

constexpr std::size_t kStringOffset = 8;
constexpr std::size_t kBytesOffset = 32;
constexpr std::size_t kBytesSize = 16;
constexpr std::size_t kBytesUsedOffset = 48;

template <typename T>
T ReadAt(const void* record, std::size_t offset) {
  T value;
  std::memcpy(&value, static_cast<const char*>(record) + offset, sizeof value);
  return value;
}

}  // namespace

tagPortDescription ReadPortDescription(const void* record) {
  tagPortDescription description;
  description.port_type = ReadAt<std::int32_t>(record, 0);
  for (std::size_t i = 0; i < 3; ++i) {
    const auto* text = ReadAt<const char16_t*>(record, kStringOffset + i * sizeof(void*));
    description.strings[i] = text == nullptr ? std::u16string() : std::u16string(text);
  }
  const auto used = ReadAt<std::int32_t>(record, kBytesUsedOffset);
  const auto length = static_cast<std::size_t>(std::clamp<std::int32_t>(used, 0, kBytesSize));
  description.data.assign(static_cast<const char*>(record) + kBytesOffset, length);
  return description;
}

}  // namespace lxemu
