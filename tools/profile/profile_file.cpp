#include "profile/profile_file.h"

#include <algorithm>

#include "names/setting_names.h"
#include "profile/json_lines.h"
#include "profile/profile_settings.h"

namespace tvmgr {
namespace {

constexpr std::string_view kFormat = "tvmgr-profile";
constexpr std::string_view kVersion = "1";

std::string TextOf(const tagJsonValue& object, std::string_view name) {
  const tagJsonValue* const member = FindMember(object, name);
  if (member == nullptr || member->kind == EJsonKind::kNull) {
    return {};
  }
  RequireKind(*member, EJsonKind::kText, QuoteJson(name));
  return member->text;
}

tagProfileSetting ReadSetting(const tagJsonValue& member, const BytesOfValue& bytes_of) {
  const auto fail = [&](const std::string& why) { return CFileProblem(member.line, why); };
  const std::optional<tagSettingName> setting = FindSetting(member.name);
  if (!setting) {
    throw fail("there is no setting " + QuoteJson(member.name) + "; \"tvmgr get --all\" lists them");
  }
  const std::string key(setting->key);
  if (const std::string_view why = WhyNotInProfiles(setting->id); !why.empty()) {
    throw fail(key + " cannot be in a profile: " + std::string(why));
  }
  RequireKind(member, EJsonKind::kText, "the value of " + key);
  std::string value;
  try {
    value = bytes_of(member.text);
  } catch (const std::invalid_argument& error) {
    throw fail("the value of " + key + " " + error.what());
  }
  if (value.size() > kLongestValue) {
    throw fail("the value of " + key + " has " + std::to_string(value.size()) + " bytes; more than " +
               std::to_string(kLongestValue) + " are no value");
  }
  if (value.empty()) {
    throw fail("the value of " + key + " is empty, which the printer does not take");
  }
  if (!IsSafeValue(value)) {
    throw fail("the value of " + key + " holds ^, ~ or a control character, which begin commands");
  }
  return {setting->id, key, std::move(value), member.line};
}

}  // namespace

tagProfile ParseProfile(std::string_view text, const BytesOfValue& bytes_of) {
  const tagJsonValue root = ReadJsonLines(text, kLargestProfile);
  RequireKind(root, EJsonKind::kObject, "a profile");
  const tagJsonValue* const format = FindMember(root, "format");
  if (format == nullptr || format->text != kFormat) {
    throw CFileProblem(format == nullptr ? root.line : format->line,
                       "this is no profile: \"format\": \"tvmgr-profile\" is missing");
  }
  const tagJsonValue* const version = FindMember(root, "version");
  if (version == nullptr || version->text != kVersion) {
    throw CFileProblem(version == nullptr ? root.line : version->line,
                       "\"version\" is to be 1: this tvmgr knows no other");
  }
  RequireMembers(root, {"format", "version", "printer", "time", "settings"});
  tagProfile profile;
  if (const tagJsonValue* const printer = FindMember(root, "printer")) {
    RequireKind(*printer, EJsonKind::kObject, "\"printer\"");
    RequireMembers(*printer, {"kind", "value", "model", "firmware"});
    profile.kind = TextOf(*printer, "kind");
    profile.printer = TextOf(*printer, "value");
    profile.model = TextOf(*printer, "model");
    profile.firmware = TextOf(*printer, "firmware");
  }
  profile.time = TextOf(root, "time");
  const tagJsonValue* const settings = FindMember(root, "settings");
  if (settings == nullptr) {
    throw CFileProblem(root.line, "\"settings\" is missing");
  }
  RequireKind(*settings, EJsonKind::kObject, "\"settings\"");
  for (const tagJsonValue& member : settings->items) {
    tagProfileSetting setting = ReadSetting(member, bytes_of);
    for (const tagProfileSetting& earlier : profile.settings) {
      if (earlier.id == setting.id) {
        throw CFileProblem(setting.line,
                           setting.key + " stands in line " + std::to_string(earlier.line) + " already");
      }
    }
    profile.settings.push_back(std::move(setting));
  }
  if (profile.settings.empty()) {
    throw CFileProblem(settings->line, "there are no settings in it");
  }
  return profile;
}

std::string FormatProfile(const tagProfile& profile,
                          const std::function<std::string(std::string_view)>& shown) {
  const auto text = [](const std::string& utf8) {
    return utf8.empty() ? std::string("null") : QuoteJson(utf8);
  };
  std::string file =
      "// Settings of a label printer: \"tvmgr apply\" writes them to one, \"tvmgr diff\" compares. Comments "
      "are allowed;\n"
      "// in values a backslash is \\\\\\\\, and \\\\xNN a byte that is no text.\n{\n  \"format\": "
      "\"tvmgr-profile\",\n"
      "  \"version\": 1,\n  \"printer\": {\n    \"kind\": " +
      text(profile.kind) + ",\n    \"value\": " + text(profile.printer) +
      ",\n    \"model\": " + text(profile.model) + ",\n    \"firmware\": " + text(profile.firmware) +
      "\n  },\n  \"time\": " + text(profile.time) + ",\n  \"settings\": {";
  bool is_first = true;
  for (const tagProfileSetting& setting : profile.settings) {
    file +=
        (is_first ? "\n    " : ",\n    ") + QuoteJson(setting.key) + ": " + QuoteJson(shown(setting.value));
    is_first = false;
  }
  return file + "\n  }\n}\n";
}

bool LooksLikeProfile(std::string_view text) {
  return text.find(kFormat) != std::string_view::npos;
}

}  // namespace tvmgr
