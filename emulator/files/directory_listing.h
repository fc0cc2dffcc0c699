#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "emulator/files/file_store.h"

namespace lxemu {

/// The text of a directory answer: a header line, one line of fixed columns for each file that matches, a
/// summary line; every line ends with CR LF and none is empty.
///
/// Columns of a file line, counted from 0: 2 device letter, 3 colon, 4-15 name, 17-24 size in bytes,
/// right-aligned (99999999 stands for more), 25 P when protected.
std::string DirectoryListing(const CFileStore& files, char device, std::string_view pattern,
                             std::uint64_t capacity);

}  // namespace lxemu
