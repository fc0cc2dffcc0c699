#include <algorithm>
#include <iterator>
#include <map>

#include "batch/verdict.h"

namespace tvmgr {
namespace {

using Json = nlohmann::ordered_json;

// As many are named; of more, how many there are.
constexpr std::size_t kNamed = 4;

std::string Text(const Json& value) {
  return value.is_string() ? value.get<std::string>() : value.is_null() ? "-" : value.dump();
}

std::string At(const Json& json, const char* member) {
  const auto found = json.find(member);
  return found == json.end() ? "-" : Text(*found);
}

std::string Count(std::size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string Listed(const std::vector<std::string>& texts) {
  std::string list;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (i == kNamed) {
      return list + " …";
    }
    list += (i == 0 ? "" : " ") + texts[i];
  }
  return list;
}

/** "CLM,S written", "12 settings written; CLM,P differs". */
std::string Verdicts(const Json& rows, const char* name, const std::string& noun) {
  std::map<std::string, std::vector<std::string>> by_verdict;
  std::vector<std::string> order;
  for (const Json& row : rows) {
    const std::string verdict = At(row, "verdict");
    if (by_verdict[verdict].empty()) {
      order.push_back(verdict);
    }
    by_verdict[verdict].push_back(At(row, name));
  }
  std::string words;
  for (const std::string& verdict : order) {
    const std::vector<std::string>& names = by_verdict[verdict];
    words += words.empty() ? "" : "; ";
    words +=
        names.size() <= kNamed ? Listed(names) + " " + verdict : Count(names.size(), noun) + " " + verdict;
  }
  return words;
}

std::string Values(const Json& rows) {
  std::vector<std::string> values;
  std::size_t answered = 0;
  for (const Json& row : rows) {
    answered += At(row, "value") == "-" ? 0 : 1;
    values.push_back(At(row, "key") + "=" + At(row, "value"));
  }
  return values.size() <= kNamed
             ? Listed(values)
             : std::to_string(answered) + " of " + Count(values.size(), "setting") + " answered";
}

/** "A.PNG removed; B.PNG not removed (the printer has no such file)". */
std::string Removed(const Json& rows) {
  Json judged = Json::array();
  for (const Json& row : rows) {
    const Json removed = row.value("removed", Json());
    const std::string reason = At(row, "reason");
    judged.push_back({{"name", At(row, "name")},
                      {"verdict", removed == Json(true)          ? "removed"
                                  : removed.is_null()            ? "sent, not proved"
                                  : reason == "would be removed" ? reason
                                                                 : "not removed (" + reason + ")"}});
  }
  return Verdicts(judged, "name", "file");
}

std::string OfSettings(const Json& settings) {
  if (!settings.is_array() || settings.empty() || !settings.front().is_object()) {
    return {};
  }
  return settings.front().contains("verdict") ? Verdicts(settings, "key", "setting")
         : settings.front().contains("value") ? Values(settings)
                                              : std::string();
}

}  // namespace

std::string DocumentReasons(const Json& document) {
  constexpr std::string_view kWell[] = {"written", "unchanged", "left out", "stored and read back"};
  std::string lines;
  std::size_t count = 0;
  for (const char* const member : {"settings", "files"}) {
    const auto rows = document.find(member);
    for (const Json& row : rows != document.end() && rows->is_array() ? *rows : Json::array()) {
      const bool is_well =
          !row.is_object() || At(row, "reason") == "-" || !row.contains("verdict") ||
          (std::find(std::begin(kWell), std::end(kWell), At(row, "verdict")) != std::end(kWell) &&
           At(row, "reason").find("protection was not set") == std::string::npos);
      if (!is_well && ++count <= kNamed) {
        lines += "\n" + At(row, row.contains("key") ? "key" : "name") + ": " + At(row, "reason");
      }
    }
  }
  return count > kNamed ? lines + "\nand " + std::to_string(count - kNamed) + " more" : lines;
}

std::string DocumentWords(const Json& document) {
  const std::string command = At(document, "command");
  if (command == "status" && document.contains("status_name")) {
    return At(document, "status_name") + " (" + At(document, "meaning") + ")";
  }
  if (command == "info" && document.contains("settings") && document["settings"].is_object()) {
    const Json& settings = document["settings"];
    return At(document, "status_name") + (settings.empty() ? "" : "; " + At(settings, "IMP,S"));
  }
  if (command == "backup" && document.contains("file_count")) {
    return At(document, "file") + ": " + At(document, "setting_count") + " settings, " +
           At(document, "file_count") + " files";
  }
  if (command == "restore" && document.contains("differences")) {
    const std::string words = Verdicts(document["differences"], "subject", "difference");
    return words.empty() ? At(document, "setting_count") + " settings and " + At(document, "file_count") +
                               " files equal"
                         : words;
  }
  if (command == "export" && document.contains("setting_count")) {
    return At(document, "file") + ": " + At(document, "setting_count") + " settings";
  }
  const bool is_plan = document.value("dry_run", Json()) == Json(true);
  if (command == "put" && document.contains("bytes")) {
    return At(document, "name") + ", " + At(document, "bytes") + " bytes" +
           (is_plan ? " would be stored" : "");
  }
  if (command == "restore" && document.contains("files") && document["files"].is_array()) {
    return Verdicts(document["files"], "name", "file");
  }
  if (command == "rm" && document.contains("files") && document["files"].is_array()) {
    return Removed(document["files"]);
  }
  if (command == "op" && document.contains("status_name")) {
    return At(document, "operation") + ", then " + At(document, "status_name");
  }
  const auto settings = document.find("settings");
  return settings == document.end() ? std::string() : OfSettings(*settings);
}

}  // namespace tvmgr
