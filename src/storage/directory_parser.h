#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavira {

/** One file of a directory listing. */
struct tagDirectoryEntry {
  std::string name; /**< with extension, without device; as the printer writes it, in the ANSI code page */
  bool p_mark;      /**< the listing carries a "P" behind the file */
};

/**
 * Reads the printer's fixed-column directory listing: device letter at column 2, name at columns 4 to 15,
 * mark at column 25. An empty line ends it. Lines that are shorter than 30 characters or name another device
 * than E or Z are passed over. Linear in the listing's bytes. Throws std::bad_alloc.
 */
std::vector<tagDirectoryEntry> ParseDirectory(std::string_view listing);

}  // namespace tavira
