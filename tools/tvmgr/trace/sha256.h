#pragma once

#include <string>
#include <string_view>

namespace tvmgr {

/** The SHA-256 of the bytes, as 64 lower-case hexadecimal digits: what certutil -hashfile prints for a file. */
std::string Sha256(std::string_view bytes);

}  // namespace tvmgr
