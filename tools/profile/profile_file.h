#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tvmgr {

/** A setting that a profile wants. */
struct tagProfileSetting {
  std::int32_t id = 0;
  std::string key;
  std::string value;    /**< bytes as the printer takes them */
  std::size_t line = 0; /**< of the file, from 1; 0: not from a file */
};

/** Settings of a printer as a file that people read and write. Texts are UTF-8; empty ones are not known. */
struct tagProfile {
  std::string kind;    /**< how the printer was reached: "port", "device" or "address" */
  std::string printer; /**< and where */
  std::string model;   /**< what it said it is */
  std::string firmware;
  std::string time; /**< local, "2031-05-04 13:14:15" */
  std::vector<tagProfileSetting> settings;
};

/** Makes bytes of a value as it is shown; throws std::invalid_argument, with the reason, when it cannot. */
using BytesOfValue = std::function<std::string(std::string_view shown)>;

/** Bytes of a profile file; larger ones are refused. */
inline constexpr std::size_t kLargestProfile = 1U << 20;

/**
 * Reads a profile. Throws a CFileProblem, with line and reason, for anything that is not understood: settings that do
 * not exist, stand there twice or cannot be in a profile, values that are no texts, too long or not to be sent.
 */
tagProfile ParseProfile(std::string_view text, const BytesOfValue& bytes_of);

/** The file; `shown` makes text of a value's bytes, which ParseProfile's `bytes_of` undoes. */
std::string FormatProfile(const tagProfile& profile,
                          const std::function<std::string(std::string_view)>& shown);

/** True for a text that says of itself that it is a profile, whatever else is wrong with it. */
bool LooksLikeProfile(std::string_view text);

}  // namespace tvmgr
