#include "backup/backup_format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

#include "command/command_builder.h"
#include "command/fixed_commands.h"
#include "command/setting_table.h"
#include "tavira/TaviraManager.h"

namespace tavira {
namespace {

constexpr std::string_view kIdentification = "LX-R4100SeriesTavira";
constexpr std::string_view kOpenComment = "^FX";
constexpr std::string_view kCloseComment = "^FS";
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kSeparatorLine = "^FX^FS\r\n";

/** Not the order of the setting table, and on purpose: 77 stands before the resolutions, 76 behind them. */
constexpr std::array<std::uint32_t, 55> kBackupSettings{
    6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24,
    25, 26, 27, 28, 29, 35, 36, 38, 39, 40, 41, 42, 43, 44, 45, 47, 48, 49, 50,
    51, 52, 53, 54, 55, 56, 57, 77, 3,  4,  5,  76, 78, 79, 80, 82, 83};

constexpr bool AllAreInTheTable() {
  return std::all_of(kBackupSettings.begin(), kBackupSettings.end(), [](std::uint32_t id) {
    return std::any_of(kSettingTable.begin(), kSettingTable.end(),
                       [id](const tagSettingRow& row) { return row.id == static_cast<std::int32_t>(id); });
  });
}
static_assert(AllAreInTheTable());

void AppendComment(std::string& lines, std::string_view text) {
  lines.append(kOpenComment).append(text).append(kCloseComment).append(kLineEnd);
}

/** The low byte of the hexadecimal number, of any length, that `text` begins with; as "%x" reads it. */
std::uint8_t LowByteOfHexadecimal(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  const bool is_negative = text.starts_with('-');
  text.remove_prefix(is_negative || text.starts_with('+') ? 1 : 0);
  text.remove_prefix(text.starts_with("0x") || text.starts_with("0X") ? 2 : 0);
  text = text.substr(0, text.find_first_not_of("0123456789abcdefABCDEF"));
  text.remove_prefix(text.size() - std::min<std::size_t>(text.size(), 2));
  std::uint8_t low = 0;
  std::from_chars(text.data(), text.data() + text.size(), low, 16);
  return static_cast<std::uint8_t>(is_negative ? -low : low);
}

/** 0 for a setting without a number. */
std::uint8_t PrefixCharacter(const CSettingStore& store, std::uint32_t id) {
  const std::string* value = store.FindValue(id);
  return value == nullptr ? std::uint8_t{0} : LowByteOfHexadecimal(*value);
}

void AppendAttribute(std::string& lines, std::string_view ansi_name, std::string_view value) {
  lines.append("^XA^F(AE:").append(ansi_name).append(",").append(value).append("^XZ").append(kLineEnd);
}

}  // namespace

std::string FormatBackupHeader(const std::tm& local_time, std::string_view section_letters) {
  std::array<char, 80> stamp{};
  std::snprintf(stamp.data(), stamp.size(), "%04d%02d%02d%02d%02d%02d", local_time.tm_year + 1900,
                local_time.tm_mon + 1, local_time.tm_mday, local_time.tm_hour, local_time.tm_min,
                local_time.tm_sec);
  std::string lines;
  AppendComment(lines, kIdentification);
  AppendComment(lines, stamp.data());
  AppendComment(lines, section_letters);
  return lines;
}

std::string FormatSettingsBlock(const CSettingStore& store) {
  std::string lines(kSeparatorLine);
  for (const std::uint32_t id : kBackupSettings) {
    const std::string* value = store.FindValue(id);
    AppendSetCommand(lines, id, value == nullptr ? std::string_view() : *value);
    lines.append(kLineEnd);
  }
  const tagPrefixCharacters prefix{PrefixCharacter(store, TVMGR_SETTING_CCC_T),
                                   PrefixCharacter(store, TVMGR_SETTING_CCC_C),
                                   PrefixCharacter(store, TVMGR_SETTING_CCC_D)};
  if (prefix.control != 0 && prefix.format != 0 && prefix.delimiter != 0) {
    AppendPrefixChange(lines, prefix);
  }
  return lines.append(kSaveCommand).append(kLineEnd);
}

std::string FormatFileBlock(std::string_view ansi_name, std::string_view download_command, bool mark) {
  std::string lines;
  lines.reserve(download_command.size() + 2 * ansi_name.size() + 64);
  lines.append(kSeparatorLine);
  if (!download_command.empty()) {
    AppendAttribute(lines, ansi_name, "N");  // the mark off while it is written again
    lines.append(download_command).append(kLineEnd);
    AppendAttribute(lines, ansi_name, mark ? "Y" : "N");
  }
  return lines;
}

}  // namespace tavira
