#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tvmgr {

/** What a file is to a 64-bit program that wants to load it as a DLL with certain entry points. */
enum class ELibraryFile {
  kGood,
  kNoLibrary,    /**< no Windows module, one that is cut off, or a program */
  k32Bit,        /**< for 32-bit programs */
  kOtherMachine, /**< 64 bits, but another processor */
  kOtherLibrary, /**< exports none of the entry points */
  kIncomplete    /**< lacks some of them */
};

struct tagLibraryFile {
  ELibraryFile kind = ELibraryFile::kNoLibrary;
  std::vector<std::string> missing; /**< entry points that it does not export; of a DLL that can be read */
};

/** Looks at a file's bytes, without loading it. Any bytes are safe. */
tagLibraryFile InspectLibrary(std::string_view bytes, std::span<const char* const> entry_points);

/** The file version of a module's version resource, "1.0.0.0"; empty: it has none. Any bytes are safe. */
std::string FileVersion(std::string_view bytes);

/**
 * True when the text of a file's stream Zone.Identifier says that it came from the internet, or from a place that counts
 * for it: Windows may refuse to load such a DLL.
 */
bool IsMarkedAsDownload(std::string_view zone_identifier);

}  // namespace tvmgr
