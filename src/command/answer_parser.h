#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "command/setting_record.h"

namespace tavira {

/**
 * The texts between STX and ETX of an answer, in order. Views into the answer; an unterminated last one is
 * dropped.
 */
class CAnswerFrames {
 public:
  explicit CAnswerFrames(std::string_view answer) : rest_(answer) {}

  /** The next frame text, empty ones included; nothing when the answer is used up. */
  std::optional<std::string_view> Next();

 private:
  std::string_view rest_;
};

/** What one frame reports about a setting; the value is a view into the answer. */
struct tagSettingAnswer {
  std::uint32_t id = 0;
  std::string_view value;
};

/** The settings that an answer reports, one after the other, in one pass over its bytes. */
class CSettingAnswers {
 public:
  explicit CSettingAnswers(std::string_view answer) : rest_(answer) {}

  /** What the next frame that names a setting reports; nothing when the answer is used up. */
  std::optional<tagSettingAnswer> Next();

 private:
  std::string_view rest_;
};

/**
 * The settings that an answer reports, one record for each frame that names one, in frame order. Linear in
 * the answer's bytes whatever they are. Throws std::bad_alloc.
 */
std::vector<tagSettingRecord> ScanAnswers(std::string_view answer);

/**
 * Credits one frame to a setting: the first row of the setting table whose answer head occurs in it with
 * anything behind. Views into the frame; false when no row matches.
 */
bool MatchAnswerFrame(std::string_view frame, std::uint32_t& id, std::string_view& value);

/**
 * The value behind the first occurrence of `head` in the first frame that holds it; empty when there is none.
 */
std::string_view FindAnswerValue(std::string_view answer, std::string_view head);

}  // namespace tavira
