#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tvmgr {

/** Which columns of a table are shown, and in which order its rows. By their headings. */
struct tagTableView {
  std::vector<std::string> columns; /**< empty: all */
  std::string sort;                 /**< empty: as they come */
  bool is_descending = false;
};

/**
 * The heading that a user means by a name: letter case does not count, and "-" and "_" are blanks. None when
 * there is no such column.
 */
std::optional<std::string> FindHeading(std::string_view name, std::span<const std::string> headings);

/**
 * Reads what the options --columns ("id,value") and --sort ("value", "value:desc") say into the view.
 *
 * @return what is wrong with it, naming the columns that there are; empty: nothing
 */
std::string ReadColumns(std::string_view text, std::span<const std::string> headings, tagTableView& view);
std::string ReadSort(std::string_view text, std::span<const std::string> headings, tagTableView& view);

}  // namespace tvmgr
