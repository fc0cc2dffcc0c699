#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace lxemu {

/// Deviations of one printer from the well-behaved default. Plain switches: change them at any time, the next
/// command stream sees them. Setting keys are written as in "CLR,Z".
struct tagQuirks {
  /// Understands the alternative characters and those in force only, no longer ^ ~ and , once they were
  /// changed.
  bool strict_prefix = false;
  /// The answer to ^HF names the format without device and extension.
  bool short_format_names = false;
  /// ^H(Y answers with :Z64: payloads instead of :B64:.
  bool compressed_downloads = false;
  /// Every ^S( is understood and ignored.
  bool ignore_sets = false;
  /// Reports OF, whatever else it does.
  bool off_line = false;
  /// Values are stored in upper case.
  bool upper_case_values = false;
  /// Decimal values of these keys are padded with leading zeros to this many digits.
  std::map<std::string, unsigned, std::less<>> padded_keys;
  /// ^S( for these keys is ignored.
  std::set<std::string, std::less<>> refused_keys;
  /// Queries of these keys (SMA,S included) get no answer.
  std::set<std::string, std::less<>> unanswered_keys;
  /// Queries of these keys report this text instead of the value, for example 400 for CLR,Z.
  std::map<std::string, std::string, std::less<>> fixed_answers;
  /// Sent before and after every STX…ETX frame.
  std::string garbage_between_frames;
  /// How long one maintenance routine (~WC, ~J(C, ~W(PNC, ~JC) keeps the printer busy, in ms.
  std::uint32_t maintenance_ms = 2000;
  /// Bytes that each memory device holds; an upload that does not fit is refused.
  std::uint64_t device_capacity = std::uint64_t{1} << 30;
};

}  // namespace lxemu
