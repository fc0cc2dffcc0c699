#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace tvmgr {

// The two DLLs that the tool needs, as files.

/** Where TaviraManager.dll has to be: beside this program. */
std::wstring ManagerLibraryPath();

/** The Ferrolink.dll that is loaded, else the one that Windows would load; empty: there is none. */
std::wstring FindPortLibrary();

/** Where Windows has looked for a Ferrolink.dll in vain, in words. */
std::string NoPortLibrary();

/** This program. */
std::wstring ProgramPath();

std::span<const char* const> ManagerEntryPoints();
std::span<const char* const> PortEntryPoints();

inline constexpr char kOneDelivery[] = "Put tvmgr.exe and the DLL of one delivery into the same folder";

/**
 * What is wrong with a DLL that cannot be used, with its path.
 *
 * @param error  of Windows, which did not load it
 */
std::string ExplainLibrary(const std::wstring& path, std::span<const char* const> entry_points,
                           std::uint32_t error);

/** What is seen of a DLL without loading it. */
struct tagLibraryFacts {
  std::string path; /**< UTF-8 */
  bool exists = false;
  std::string problem;      /**< in words; empty: it is as it should be */
  std::string version;      /**< "1.0.0.0"; may be empty */
  bool is_download = false; /**< it carries the mark of one */
};

tagLibraryFacts LookAtLibrary(const std::wstring& path, std::span<const char* const> entry_points);

}  // namespace tvmgr
