#include "printer/choice_file.h"

#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "files/host_data.h"
#include "output/command_error.h"
#include "output/json_output.h"
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

tagRememberedPrinter ReadPrinter(const Json& json) {
  tagRememberedPrinter printer{json.at("kind").get<std::string>(), json.at("value").get<std::string>(),
                               json.value("name", std::string())};
  const bool is_kind = printer.kind == "port" || printer.kind == "device" || printer.kind == "address";
  if (!is_kind || printer.value.empty()) {
    throw CFailure("");
  }
  return printer;
}

Json WritePrinter(const tagRememberedPrinter& printer) {
  return {{"kind", printer.kind}, {"value", printer.value}, {"name", printer.name}};
}

tagChoiceFile Read(const std::string& text) {
  const Json json = Json::parse(text);
  if (!json.is_object() || !json.contains("found")) {
    throw CFailure("");  // somebody else's file: we always write this member
  }
  tagChoiceFile choice;
  if (json.contains("chosen")) {
    choice.chosen = ReadPrinter(json.at("chosen"));
  }
  for (const Json& printer : json.at("found")) {
    choice.found.push_back(ReadPrinter(printer));
  }
  return choice;
}

}  // namespace

tagChoiceFile LoadChoiceFile() {
  const fs::path path = FilePath();
  std::error_code error;
  if (path.empty() || !fs::exists(path, error)) {
    return {};
  }
  try {
    return Read(ReadHostFile(ToUtf8(path.wstring())));
  } catch (const Json::exception&) {
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
  Json json = Json::object();
  if (choice.chosen) {
    json["chosen"] = WritePrinter(*choice.chosen);
  }
  json["found"] = Json::array();
  for (const tagRememberedPrinter& printer : choice.found) {
    json["found"].push_back(WritePrinter(printer));
  }
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  fs::path next = path;
  next += L".new";
  WriteHostFile(ToUtf8(next.wstring()), json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
  fs::rename(next, path, error);
  if (error) {
    std::error_code ignored;
    fs::remove(next, ignored);
    throw CFailure("the file " + Shown(path) + " cannot be replaced");
  }
}

}  // namespace tvmgr
