#include "printer/manager_library.h"

#include <windows.h>

#include <filesystem>
#include <iterator>
#include <vector>

#include "files/host_data.h"
#include "library_file/library_file.h"
#include "output/command_error.h"
#include "output/text_encoding.h"

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

// What is wrong with a file that is there.
std::string ExplainFile(const fs::path& path, std::span<const char* const> functions, DWORD error) {
  const std::string file = "\"" + Text(path) + "\" ";
  tagLibraryFile found;
  try {
    found = InspectLibrary(ReadHostFile(Text(path)), functions);
  } catch (const CFailure&) {
    return file + "cannot be read";
  }
  switch (found.kind) {
    case ELibraryFile::kNoLibrary:
      return file + "is no DLL, or it is damaged";
    case ELibraryFile::k32Bit:
      return file + "is a DLL for 32-bit programs; the one for 64 bits is needed";
    case ELibraryFile::kOtherMachine:
      return file + "is a DLL for another kind of processor; the one for x64 is needed";
    case ELibraryFile::kOtherLibrary:
      return file + "is another DLL: it has none of the entry points " +
             (found.missing.size() > 6 ? found.missing.front() + ", ..." : Joined(found.missing));
    case ELibraryFile::kIncomplete:
      return file + "lacks the entry points " + Joined(found.missing) + ": another version?";
    case ELibraryFile::kGood:
      break;
  }
  return file + "is as it should be, but Windows does not load it (error " + std::to_string(error) +
         (error == ERROR_MOD_NOT_FOUND ? ": a DLL that it needs itself is missing)" : ")");
}

}  // namespace

void LoadManagerLibrary() {
  if (TVMGR_Initialize != nullptr) {
    return;
  }
  // Only from there: the one in some other folder might be anybody's.
  const fs::path path = ModulePath(nullptr).parent_path() / L"TaviraManager.dll";
  const HMODULE module = LoadLibraryW(path.c_str());
  const DWORD error = module == nullptr ? GetLastError() : 0;
  bool complete = module != nullptr;
  const auto look_up = [&](const char* name) {
    void* const address = module == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(module, name));
    complete = complete && address != nullptr;
    return address;
  };
#define TVMGR_LOOK_UP(name) name = reinterpret_cast<decltype(name)>(look_up(#name));
  TVMGR_FOR_EACH_FUNCTION(TVMGR_LOOK_UP)
#undef TVMGR_LOOK_UP
  if (complete) {
    return;
  }
  TVMGR_Initialize = nullptr;
  std::error_code ignored;
  const std::string why = fs::exists(path, ignored) ? ExplainFile(path, kManagerFunctions, error)
                                                    : "\"" + Text(path) + "\" is not there";
  throw CFailure("TaviraManager.dll cannot be used: " + why +
                 ". Put tvmgr.exe and the DLL of one delivery into " + "the same folder");
}

std::string ExplainPortLibrary() {
  fs::path path;
  if (const HMODULE module = GetModuleHandleW(kPortLibrary)) {
    path = ModulePath(module);  // the module leaves a library loaded that lacks an entry point
  } else {
    SetSearchPathMode(BASE_SEARCH_PATH_ENABLE_SAFE_SEARCHMODE);  // the order in which DLLs are looked for
    std::wstring found(32'768, L'\0');
    found.resize(
        SearchPathW(nullptr, kPortLibrary, nullptr, static_cast<DWORD>(found.size()), found.data(), nullptr));
    path = found;
  }
  if (path.empty()) {
    return "Ferrolink.dll is not there: neither in \"" + Text(ModulePath(nullptr).parent_path()) +
           "\" nor where else Windows looks for DLLs";
  }
  return "Ferrolink.dll cannot be used: " +
         ExplainFile(path, kPortFunctions, LoadLibraryW(path.c_str()) == nullptr ? GetLastError() : 0);
}

}  // namespace tvmgr
