#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tvmgr {

/** How much a verdict on a setting proves; the larger, the worse. */
enum class EProof { kProved, kOpen, kFailed };

/** What is known of a setting that was to be written. */
struct tagSettingVerdict {
  std::string word;
  std::string reason; /**< empty: the word says it all */
  EProof proof = EProof::kFailed;
};

/**
 * Judges what was read back after the module has written and verified.
 *
 * @param asked            the bytes that were written
 * @param shown            the same for a command line
 * @param got              the bytes that were read; none: not answered
 * @param keep_resolution  the guard was told to leave the resolutions alone
 */
tagSettingVerdict JudgeWritten(std::int32_t id, std::string_view asked, const std::string& shown,
                               const std::optional<std::string>& got, bool keep_resolution);

}  // namespace tvmgr
