#include "computer/library_files.h"

#include <windows.h>

#include <filesystem>
#include <iterator>
#include <vector>

#include "files/host_data.h"
#include "library_file/library_file.h"
#include "output/command_error.h"
#include "output/text_encoding.h"
#include "printer/manager_library.h"

namespace tvmgr {
namespace {

namespace fs = std::filesystem;

#define TVMGR_NAME(name) #name,
constexpr const char* kManagerFunctions[] = {TVMGR_FOR_EACH_FUNCTION(TVMGR_NAME)};
#undef TVMGR_NAME
static_assert(std::size(kManagerFunctions) == 39);

constexpr const char* kPortFunctions[] = {"Initialize",  "Terminate",        "SendData",
                                          "ReceiveData", "ClearReceiveData", "GetPortComIndex"};
constexpr wchar_t kPortLibrary[] = L"Ferrolink.dll";

fs::path ModulePath(HMODULE module) {
  std::wstring path(32'768, L'\0');
  path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

std::string Text(const fs::path& path) {
  return ToUtf8(path.wstring());
}

std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    text += (text.empty() ? "" : ", ") + name;
  }
  return text;
}

// What is wrong with a file that is there, without its name; empty: nothing.
std::string ProblemOf(const tagLibraryFile& found) {
  switch (found.kind) {
    case ELibraryFile::kNoLibrary:
      return "is no DLL, or it is damaged";
    case ELibraryFile::k32Bit:
      return "is a DLL for 32-bit programs; the one for 64 bits is needed";
    case ELibraryFile::kOtherMachine:
      return "is a DLL for another kind of processor; the one for x64 is needed";
    case ELibraryFile::kOtherLibrary:
      return "is another DLL: it has none of the entry points " +
             (found.missing.size() > 6 ? found.missing.front() + ", ..." : Joined(found.missing));
    case ELibraryFile::kIncomplete:
      return "lacks the entry points " + Joined(found.missing) + ": another version?";
    case ELibraryFile::kGood:
      break;
  }
  return {};
}

bool IsDownload(const std::wstring& path) {
  // A stream beside the file's contents, on disks that have such.
  try {
    return IsMarkedAsDownload(ReadHostFile(ToUtf8(path + L":Zone.Identifier")));
  } catch (const CFailure&) {
    return false;
  }
}

}  // namespace

std::wstring ProgramPath() {
  return ModulePath(nullptr).wstring();
}

std::wstring ManagerLibraryPath() {
  return (ModulePath(nullptr).parent_path() / L"TaviraManager.dll").wstring();
}

std::wstring FindPortLibrary() {
  if (const HMODULE module = GetModuleHandleW(kPortLibrary)) {
    return ModulePath(module).wstring();  // the module leaves a library loaded that lacks an entry point
  }
  SetSearchPathMode(BASE_SEARCH_PATH_ENABLE_SAFE_SEARCHMODE);  // the order in which DLLs are looked for
  std::wstring found(32'768, L'\0');
  found.resize(
      SearchPathW(nullptr, kPortLibrary, nullptr, static_cast<DWORD>(found.size()), found.data(), nullptr));
  return found;
}

std::string NoPortLibrary() {
  return "Ferrolink.dll is not there: neither in \"" + Text(ModulePath(nullptr).parent_path()) +
         "\" nor where else Windows looks for DLLs";
}

std::span<const char* const> ManagerEntryPoints() {
  return kManagerFunctions;
}

std::span<const char* const> PortEntryPoints() {
  return kPortFunctions;
}

tagLibraryFacts LookAtLibrary(const std::wstring& path, std::span<const char* const> entry_points) {
  tagLibraryFacts facts{ToUtf8(path), false, {}, {}, false};
  std::error_code ignored;
  facts.exists = !path.empty() && fs::exists(path, ignored);
  if (!facts.exists) {
    facts.problem = "is not there";
    return facts;
  }
  try {
    const std::string bytes = ReadHostFile(facts.path);
    facts.problem = ProblemOf(InspectLibrary(bytes, entry_points));
    facts.version = FileVersion(bytes);
  } catch (const CFailure&) {
    facts.problem = "cannot be read";
  }
  facts.is_download = IsDownload(path);
  return facts;
}

std::string ExplainLibrary(const std::wstring& path, std::span<const char* const> entry_points,
                           std::uint32_t error) {
  const tagLibraryFacts facts = LookAtLibrary(path, entry_points);
  const std::string file = "\"" + facts.path + "\" ";
  if (!facts.problem.empty()) {
    return file + facts.problem;
  }
  return file + "is as it should be, but Windows does not load it (error " + std::to_string(error) +
         (error == ERROR_MOD_NOT_FOUND ? ": a DLL that it needs itself is missing)" : ")") +
         (facts.is_download ? "; it carries the mark of a download" : "");
}

}  // namespace tvmgr
