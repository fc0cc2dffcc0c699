#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "output/record_output.h"
#include "profile/profile_file.h"
#include "profile/setting_labels.h"

namespace tvmgr {

/** Reads a profile of this computer; what is wrong with it ends the command, with file, line and reason. */
tagProfile ReadProfile(const std::string& path);

/** As ReadProfile, for text that was read already. */
tagProfile ParseHostProfile(const std::string& path, const std::string& text);

/** The labels of a file, or none: for tables, questions and the check of values. */
class CLabels {
 public:
  /** An empty path: no labels, and no column for their names. What is wrong with the file ends the command, as ReadProfile says. */
  explicit CLabels(const std::string& path);

  bool IsEmpty() const { return labels_.empty(); }

  /** The heading of the names' column; empty, so that no table shows it, without labels. */
  std::string NameHeading() const { return IsEmpty() ? "" : kNameHeading; }
  tagCell NameCell(std::int32_t id) const;

  /** The setting's value cell with unit and meaning behind it. Cells without a value stay as they are. */
  tagCell WithUnit(std::int32_t id, tagCell cell) const;

  /** For JSON: what the value means; null where nothing is stated. */
  tagCell MeaningCell(std::int32_t id, const std::optional<std::string>& bytes) const;

  /** Why these bytes may not be written; empty: they may. */
  std::string WhyNot(std::int32_t id, const std::string& bytes) const;

 private:
  static constexpr char kNameHeading[] = "NAME";

  SettingLabels labels_;
};

}  // namespace tvmgr
