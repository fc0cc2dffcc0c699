#pragma once

#include <string_view>
#include <vector>

namespace tavira {

/** One file of a directory listing. */
struct tagDirectoryEntry {
  std::string_view name_field; /**< the listing's 12 bytes, in the ANSI code page, blanks and all */
  bool p_mark;                 /**< the listing carries a "P" behind the file */
};

/**
 * Reads the printer's fixed-column directory listing: device letter at column 2, name at columns 4 to 15,
 * mark at column 25. An empty line ends it. Lines that are shorter than 30 characters or name another device
 * than E or Z are passed over. The entries refer to the listing. Linear in its bytes. Throws std::bad_alloc.
 */
std::vector<tagDirectoryEntry> ParseDirectory(std::string_view listing);

}  // namespace tavira
