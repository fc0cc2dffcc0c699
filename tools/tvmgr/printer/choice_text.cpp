#include "printer/choice_text.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace tvmgr {
namespace {

using Json = nlohmann::ordered_json;

/** A damaged name is no member of ours: what it named would be missed without a word. */
bool HasOnly(const Json& json, std::initializer_list<std::string_view> members) {
  return json.is_object() && std::all_of(json.items().begin(), json.items().end(), [&](const auto& item) {
           return std::find(members.begin(), members.end(), item.key()) != members.end();
         });
}

std::optional<tagRememberedPrinter> ReadPrinter(const Json& json) {
  if (!HasOnly(json, {"kind", "value", "name"})) {
    return std::nullopt;
  }
  tagRememberedPrinter printer{json.at("kind").get<std::string>(), json.at("value").get<std::string>(),
                               json.value("name", std::string())};
  const bool is_kind = printer.kind == "port" || printer.kind == "device" || printer.kind == "address";
  return is_kind && !printer.value.empty() ? std::optional(std::move(printer)) : std::nullopt;
}

Json WritePrinter(const tagRememberedPrinter& printer) {
  return {{"kind", printer.kind}, {"value", printer.value}, {"name", printer.name}};
}

std::optional<tagChoiceFile> Read(const Json& json) {
  if (!HasOnly(json, {"chosen", "found"}) || !json.contains("found") || !json.at("found").is_array()) {
    return std::nullopt;  // somebody else's file: we always write the second one
  }
  tagChoiceFile choice;
  if (json.contains("chosen") && !(choice.chosen = ReadPrinter(json.at("chosen")))) {
    return std::nullopt;
  }
  for (const Json& printer : json.at("found")) {
    auto found = ReadPrinter(printer);
    if (!found) {
      return std::nullopt;
    }
    choice.found.push_back(*std::move(found));
  }
  return choice;
}

}  // namespace

std::optional<tagChoiceFile> ParseChoice(std::string_view text) {
  try {
    return Read(Json::parse(text));
  } catch (const Json::exception&) {
    return std::nullopt;
  }
}

std::string FormatChoice(const tagChoiceFile& choice) {
  Json json = Json::object();
  if (choice.chosen) {
    json["chosen"] = WritePrinter(*choice.chosen);
  }
  json["found"] = Json::array();
  for (const tagRememberedPrinter& printer : choice.found) {
    json["found"].push_back(WritePrinter(printer));
  }
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace tvmgr
