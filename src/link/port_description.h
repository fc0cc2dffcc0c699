#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/text_handle.h"

namespace tavira {

/** Port types of a description. A fresh one says kUnset; each exchange sets one of the other two. */
inline constexpr std::int32_t kPortTypeDirect = 1;
inline constexpr std::int32_t kPortTypeNetwork = 2;
inline constexpr std::int32_t kPortTypeUnset = 3;

/**
 * Which printer to open; handed to Ferrolink.dll by address, so the layout is part of the binary interface.
 */
struct tagPortDescription {
  std::int32_t port_type = kPortTypeUnset;
  CTextHandle port_name;
  CTextHandle device_path;
  CTextHandle address;
  std::array<std::uint8_t, 16> data{};
  std::int32_t data_size = 0; /**< bytes used in data */
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
static_assert(sizeof(tagPortDescription) == 56);
static_assert(offsetof(tagPortDescription, port_name) == 8 &&
              offsetof(tagPortDescription, device_path) == 16 &&
              offsetof(tagPortDescription, address) == 24 && offsetof(tagPortDescription, data) == 32 &&
              offsetof(tagPortDescription, data_size) == 48);
#pragma GCC diagnostic pop

}  // namespace tavira
