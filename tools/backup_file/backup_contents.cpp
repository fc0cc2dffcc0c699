#include "backup_file/backup_contents.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace tvmgr {
namespace {

constexpr std::size_t kTimeStampSize = 14;

std::string HexDigits(char byte) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  return {kDigits[value >> 4], kDigits[value & 0x0F]};
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

char UpperCase(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace

std::map<std::string, std::string> SettingsByKey(const tagBackupContents& contents) {
  std::map<std::string, std::string> values;
  for (const tagBackupSetting& setting : contents.settings) {
    if (!setting.value.empty()) {
      values[setting.key] = setting.value;
    }
  }
  if (contents.prefix) {
    values["CCC,T"] = HexDigits(contents.prefix->control);
    values["CCC,C"] = HexDigits(contents.prefix->format);
    values["CCC,D"] = HexDigits(contents.prefix->delimiter);
  }
  return values;
}

std::string ReadableTime(std::string_view time_stamp) {
  if (time_stamp.size() != kTimeStampSize || !std::all_of(time_stamp.begin(), time_stamp.end(), IsDigit)) {
    return {};
  }
  const auto two_digits = [&](std::size_t at) {
    return (time_stamp[at] - '0') * 10 + (time_stamp[at + 1] - '0');
  };
  const std::chrono::year_month_day date{std::chrono::year(two_digits(0) * 100 + two_digits(2)),
                                         std::chrono::month(static_cast<unsigned>(two_digits(4))),
                                         std::chrono::day(static_cast<unsigned>(two_digits(6)))};
  // The clock of Windows begins with the year 1601. A minute may have a 61st second.
  if (!date.ok() || date.year() < std::chrono::year(1601) || two_digits(8) > 23 || two_digits(10) > 59 ||
      two_digits(12) > 60) {
    return {};
  }
  std::string text(time_stamp);
  text.insert(12, ":").insert(10, ":").insert(8, " ").insert(6, "-").insert(4, "-");
  return text;
}

tagKindOfFile KindOfBackupFile(std::string_view name) {
  struct tagExtension {
    std::string_view text;
    tagKindOfFile kind;
  };
  static constexpr std::array kExtensions = std::to_array<tagExtension>({{".PNG", {'I', 'P', 0}},
                                                                         {".GRF", {'I', 'G', 1}},
                                                                         {".FMT", {'T', 0, 2}},
                                                                         {".ZPL", {'T', 0, 3}},
                                                                         {".TTF", {'F', 'T', 4}},
                                                                         {".TTE", {'F', 'E', 5}},
                                                                         {".BGD", {'B', 'B', 6}}});
  for (const tagExtension& extension : kExtensions) {
    if (name.size() >= extension.text.size() &&
        std::equal(extension.text.begin(), extension.text.end(), name.end() - extension.text.size(),
                   [](char expected, char c) { return expected == UpperCase(c); })) {
      return extension.kind;
    }
  }
  return {};
}

}  // namespace tvmgr
