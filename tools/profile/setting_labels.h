#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tvmgr {

/** What a labels file says of a setting. Texts are UTF-8; empty ones are not stated. */
struct tagSettingLabel {
  std::string name;
  std::string unit;
  /** What each allowed value means, in the file's order; the meaning may be empty. Empty: every value may be. */
  std::vector<std::pair<std::string, std::string>> values;
  std::optional<std::int64_t> minimum; /**< the value is a number, and no smaller */
  std::optional<std::int64_t> maximum;
};

/** Labels by the settings' numbers. */
using SettingLabels = std::map<std::int32_t, tagSettingLabel>;

/** Bytes of a labels file; larger ones are refused. */
inline constexpr std::size_t kLargestLabels = 1U << 20;

/** Reads a labels file; throws a CFileProblem, with line and reason, for anything that is not understood. */
SettingLabels ParseLabels(std::string_view text);

/** The meaning of a value as it is shown; empty: none is stated. */
std::string MeaningOfValue(const tagSettingLabel& label, std::string_view shown);

/** Why the labels do not allow a value, with what they allow; empty: they do, or say nothing of it. */
std::string WhyNotAllowed(const tagSettingLabel& label, std::string_view shown);

}  // namespace tvmgr
