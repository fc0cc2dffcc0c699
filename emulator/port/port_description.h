#pragma once

#include <cstdint>
#include <string>

namespace lxemu {

/// What a host says about a port when it opens it.
struct tagPortDescription {
  std::int32_t port_type = 0;
  std::u16string strings[3];  ///< the third one is the address of a network printer
  std::string data;           ///< the bytes used of the data field
};

/// Reads the 56-byte record of the port library: port type int32 at 0, three addresses of zero-terminated
/// UTF-16 text (null allowed) at 8, 16 and 24, data of 16 bytes at 32, bytes used in it int32 at 48.
tagPortDescription ReadPortDescription(const void* record);

}  // namespace lxemu
