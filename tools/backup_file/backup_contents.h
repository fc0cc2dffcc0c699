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
  std::string key;   /**< as in "CLR,Z" */
  std::string value; /**< empty: no value in this backup; the printer takes no empty one */
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
  bool is_gap = false;      /**< nothing is damaged: the printer delivered too little for the backup */
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
  std::size_t gap_count = 0;              /**< those of them that are gaps */

  bool IsComplete() const { return problem_count == 0; }
  bool IsUndamaged() const { return problem_count == gap_count; }
};

/** What no check of a backup can see, in one sentence. */
inline constexpr std::string_view kNotSeenByChecks =
    "No check can see whether a value, the time, a prefix character, a file's name or protection, or the "
    "text of a stored format is the one that was written, nor whether a whole file has been taken out or "
    "two of a kind have been swapped.";

/**
 * The settings that have a value, by key, with the prefix characters under their own keys, in two hexadecimal
 * digits.
 */
std::map<std::string, std::string> SettingsByKey(const tagBackupContents& contents);

/** "2031-05-04 13:14:15" for the 14 digits of a time stamp; empty when they are no date and time. */
std::string ReadableTime(std::string_view time_stamp);

/** What the extension of a stored file says. */
struct tagKindOfFile {
  char section = 0;       /**< the letter of its section; 0: no backup holds such files */
  char object_letter = 0; /**< its letter in a download command; 0: a stored format */
  int place = 0;          /**< files of a lower one stand in front of it in a backup */
};
tagKindOfFile KindOfBackupFile(std::string_view name);

/** The letter of the section to which a stored file belongs; 0: no backup holds such files. */
inline char SectionOfFile(std::string_view name) {
  return KindOfBackupFile(name).section;
}

}  // namespace tvmgr
