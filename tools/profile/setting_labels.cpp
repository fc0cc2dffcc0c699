#include "profile/setting_labels.h"

#include <algorithm>
#include <charconv>

#include "names/setting_names.h"
#include "profile/json_lines.h"

namespace tvmgr {
namespace {

std::optional<std::int64_t> NumberOf(std::string_view text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

std::string TextMember(const tagJsonValue& object, std::string_view name) {
  const tagJsonValue* const member = FindMember(object, name);
  if (member == nullptr) {
    return {};
  }
  RequireKind(*member, EJsonKind::kText, QuoteJson(name));
  return member->text;
}

std::optional<std::int64_t> NumberMember(const tagJsonValue& object, std::string_view name) {
  const tagJsonValue* const member = FindMember(object, name);
  if (member == nullptr) {
    return std::nullopt;
  }
  RequireKind(*member, EJsonKind::kNumber, QuoteJson(name));
  const std::optional<std::int64_t> number = NumberOf(member->text);
  if (!number) {
    throw CFileProblem(member->line, QuoteJson(name) + " is to be a whole number");
  }
  return number;
}

// A list of values, or an object: value and meaning.
void ReadValues(const tagJsonValue& values, tagSettingLabel& label) {
  const bool is_list = values.kind == EJsonKind::kList;
  if (!is_list) {
    RequireKind(values, EJsonKind::kObject, "\"values\"");
  }
  for (const tagJsonValue& value : values.items) {
    RequireKind(value, EJsonKind::kText, is_list ? "an allowed value" : "the meaning of a value");
    const std::string& text = is_list ? value.text : value.name;
    for (const auto& earlier : label.values) {
      if (earlier.first == text) {
        throw CFileProblem(value.line, "the value " + QuoteJson(text) + " stands there twice");
      }
    }
    label.values.emplace_back(text, is_list ? std::string() : value.text);
  }
  if (label.values.empty()) {
    throw CFileProblem(values.line, "\"values\" is empty: leave it out when every value may be");
  }
}

tagSettingLabel ReadLabel(const tagJsonValue& member) {
  RequireKind(member, EJsonKind::kObject, "the label of " + member.name);
  RequireMembers(member, {"name", "unit", "values", "minimum", "maximum"});
  tagSettingLabel label{TextMember(member, "name"),
                        TextMember(member, "unit"),
                        {},
                        NumberMember(member, "minimum"),
                        NumberMember(member, "maximum")};
  if (const tagJsonValue* const values = FindMember(member, "values")) {
    ReadValues(*values, label);
    if (label.minimum || label.maximum) {
      throw CFileProblem(member.line,
                         "\"values\" lists all that is allowed: leave out \"minimum\" and \"maximum\"");
    }
  }
  if (label.minimum && label.maximum && *label.minimum > *label.maximum) {
    throw CFileProblem(member.line, "\"minimum\" is larger than \"maximum\"");
  }
  return label;
}

}  // namespace

SettingLabels ParseLabels(std::string_view text) {
  const tagJsonValue root = ReadJsonLines(text, kLargestLabels);
  RequireKind(root, EJsonKind::kObject, "a labels file");
  const tagJsonValue* const format = FindMember(root, "format");
  if (format == nullptr || format->text != "tvmgr-labels") {
    throw CFileProblem(format == nullptr ? root.line : format->line,
                       "these are no labels: \"format\": \"tvmgr-labels\" is missing");
  }
  RequireMembers(root, {"format", "settings"});
  const tagJsonValue* const settings = FindMember(root, "settings");
  if (settings == nullptr) {
    throw CFileProblem(root.line, "\"settings\" is missing");
  }
  RequireKind(*settings, EJsonKind::kObject, "\"settings\"");
  SettingLabels labels;
  for (const tagJsonValue& member : settings->items) {
    const std::optional<tagSettingName> setting = FindSetting(member.name);
    if (!setting) {
      throw CFileProblem(member.line, "there is no setting " + QuoteJson(member.name));
    }
    if (!labels.emplace(setting->id, ReadLabel(member)).second) {
      throw CFileProblem(member.line, std::string(setting->key) + " stands there already");
    }
  }
  return labels;
}

std::string MeaningOfValue(const tagSettingLabel& label, std::string_view shown) {
  const auto found = std::find_if(label.values.begin(), label.values.end(),
                                  [&](const auto& value) { return value.first == shown; });
  return found == label.values.end() ? std::string() : found->second;
}

std::string WhyNotAllowed(const tagSettingLabel& label, std::string_view shown) {
  if (!label.values.empty()) {
    const bool is_there = std::any_of(label.values.begin(), label.values.end(),
                                      [&](const auto& value) { return value.first == shown; });
    if (is_there) {
      return {};
    }
    std::string allowed;
    for (const auto& [value, meaning] : label.values) {
      allowed += (allowed.empty() ? "" : ", ") + value + (meaning.empty() ? "" : " (" + meaning + ")");
    }
    return "allowed are " + allowed;
  }
  if (!label.minimum && !label.maximum) {
    return {};
  }
  const std::optional<std::int64_t> number = NumberOf(shown);
  const bool fits = number && (!label.minimum || *number >= *label.minimum) &&
                    (!label.maximum || *number <= *label.maximum);
  const std::string from = label.minimum ? " from " + std::to_string(*label.minimum) : "";
  const std::string to = label.maximum ? " to " + std::to_string(*label.maximum) : "";
  return fits ? std::string()
              : "allowed are whole numbers" + from + to + (label.unit.empty() ? "" : " " + label.unit);
}

}  // namespace tvmgr
