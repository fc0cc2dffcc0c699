#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tvmgr {

// What a backup file says. All texts are bytes as they stand in the file (the system's ANSI code page).

struct tagBackupSetting {
  std::string key; /**< as in "CLR,Z" */
  std::string value;
};

struct tagBackupPrefix {
  char control = '~';
  char format = '^';
  char delimiter = ',';

  bool operator==(const tagBackupPrefix&) const = default;
};

/** A stored file. The views look into the parsed bytes. */
struct tagBackupFile {
  std::string_view name;
  std::string_view command; /**< the download command that stores it again, as the printer sent it */
  bool is_protected = false;
};

/** Why a file is not a complete backup. */
struct tagBackupProblem {
  std::uint64_t offset = 0; /**< bytes from the beginning of the file */
  std::string subject;      /**< the key or file name concerned, may be empty */
  std::string text;         /**< plain ASCII */
};

struct tagBackupContents {
  bool is_backup = false; /**< begins as every backup does; nothing else is known of a file that does not */
  std::string time_stamp; /**< local time, 14 digits; empty when it is unreadable */
  std::string sections;   /**< letters out of "SITFBCP", in this order; empty when they are unreadable */
  std::vector<tagBackupSetting> settings;
  std::optional<tagBackupPrefix> prefix; /**< the prefix characters that a restore puts in force */
  std::vector<tagBackupFile> files;
  std::vector<tagBackupProblem> problems; /**< the first ones */
  std::size_t problem_count = 0;          /**< all of them */

  bool IsComplete() const { return problem_count == 0; }
};

/** The settings by key, with the prefix characters under their own keys, in two hexadecimal digits. */
std::map<std::string, std::string> SettingsByKey(const tagBackupContents& contents);

/** "2031-05-04 13:14:15" for the 14 digits of a time stamp; empty when they are no date and time. */
std::string ReadableTime(std::string_view time_stamp);

/**
 * The letter of the section to which a stored file belongs, by its extension; 0: no backup holds such files.
 */
char SectionOfFile(std::string_view name);

}  // namespace tvmgr
