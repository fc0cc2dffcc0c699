#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "table/table_view.h"

namespace tvmgr {

/** What a word says of the thing that it stands beside: its colour on a terminal. */
enum class ETone : std::uint8_t {
  kPlain,
  kGood, /**< green: done and seen to be done */
  kOpen, /**< yellow: not proved, or to be looked at */
  kBad   /**< red: failed, or different */
};

/** The text in the colour of its tone, for a terminal that understands the sequences for it. */
std::string Coloured(std::string_view text, ETone tone);

struct tagTableCell {
  std::string text; /**< one line, UTF-8, nothing in it that moves the cursor */
  ETone tone = ETone::kPlain;
};

struct tagTable {
  std::vector<std::string> headings;
  std::vector<std::vector<tagTableCell>> rows; /**< one cell for each heading */
};

/**
 * The table in aligned columns, headings first, a line for each row. Rows are sorted before columns are taken
 * away: numbers by their value and before all text, text without regard to the case of ASCII letters, equal
 * ones as they come. A column of the view that the table does not have is empty; one that
 * has none of them is shown whole.
 *
 * @param width  columns of the terminal, into which lines are made to fit; none: as long as they are
 */
std::string TableText(const tagTable& table, const tagTableView& view, std::optional<std::size_t> width,
                      bool is_coloured);

}  // namespace tvmgr
