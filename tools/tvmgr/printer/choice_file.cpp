#include "printer/choice_file.h"

#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "files/host_data.h"
#include "output/command_error.h"
#include "output/text_encoding.h"

namespace tvmgr {
namespace {

namespace fs = std::filesystem;

fs::path FilePath() {
  const wchar_t* const own = _wgetenv(ToWide(kChoiceFileVariable).c_str());
  if (own != nullptr && *own != 0) {
    return own;
  }
  const wchar_t* const data = _wgetenv(L"APPDATA");
  return data == nullptr || *data == 0 ? fs::path() : fs::path(data) / "tvmgr" / "choice.json";
}

std::string Shown(const fs::path& path) {
  return "\"" + ToUtf8(path.wstring()) + "\"";
}

}  // namespace

tagChoiceFile LoadChoiceFile() {
  const fs::path path = FilePath();
  std::error_code error;
  if (path.empty() || !fs::exists(path, error)) {
    return {};
  }
  try {
    if (auto choice = ParseChoice(ReadHostFile(ToUtf8(path.wstring())))) {
      return *std::move(choice);
    }
  } catch (const CFailure&) {
  }
  throw CInputFileError(
      "the file " + Shown(path) +
      ", which remembers the printer, cannot be read: \"tvmgr use --clear\" removes the choice, "
      "--port, --device or --address goes before it");
}

tagChoiceFile LoadChoiceFileOrNone() {
  try {
    return LoadChoiceFile();
  } catch (const CFailure&) {
    return {};
  }
}

void SaveChoiceFile(const tagChoiceFile& choice) {
  const fs::path path = FilePath();
  if (path.empty()) {
    throw CFailure("there is no folder for application data (APPDATA) in which to remember the printer");
  }
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  WriteHostFile(ToUtf8(path.wstring()), FormatChoice(choice));
}

}  // namespace tvmgr
