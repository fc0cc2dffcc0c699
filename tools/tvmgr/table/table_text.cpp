#include "table/table_text.h"

#include <algorithm>
#include <charconv>
#include <compare>

#include "output/text_layout.h"

namespace tvmgr {
namespace {

constexpr std::size_t kColumnGap = 2;

std::optional<std::int64_t> NumberOf(std::string_view text) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  // Behind a value its unit may stand.
  return error == std::errc() && (stop == end || *stop == ' ') ? std::optional(number) : std::nullopt;
}

bool IsBefore(const std::string& first, const std::string& second) {
  const std::optional<std::int64_t> a = NumberOf(first);
  const std::optional<std::int64_t> b = NumberOf(second);
  if (a || b) {
    return a && b ? *a < *b : a.has_value();
  }
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::lexicographical_compare(
      first.begin(), first.end(), second.begin(), second.end(), [&](char c, char d) {
        return static_cast<unsigned char>(lower(c)) < static_cast<unsigned char>(lower(d));
      });
}

/** Where the column stands; none: the table does not have it. */
std::optional<std::size_t> PlaceOf(const tagTable& table, const std::string& heading) {
  const auto found = std::find(table.headings.begin(), table.headings.end(), heading);
  return found == table.headings.end()
             ? std::nullopt
             : std::optional(static_cast<std::size_t>(found - table.headings.begin()));
}

void Sort(tagTable& table, const tagTableView& view) {
  const std::optional<std::size_t> column = PlaceOf(table, view.sort);
  if (!column) {
    return;
  }
  std::stable_sort(table.rows.begin(), table.rows.end(), [&](const auto& first, const auto& second) {
    return view.is_descending ? IsBefore(second[*column].text, first[*column].text)
                              : IsBefore(first[*column].text, second[*column].text);
  });
}

tagTable WithColumns(const tagTable& table, const std::vector<std::string>& columns) {
  tagTable chosen{columns, {}};
  for (const std::vector<tagTableCell>& row : table.rows) {
    std::vector<tagTableCell> cells;
    for (const std::string& heading : columns) {
      const std::optional<std::size_t> place = PlaceOf(table, heading);
      cells.push_back(place ? row[*place] : tagTableCell{});
    }
    chosen.rows.push_back(std::move(cells));
  }
  return chosen;
}

/** Takes from the widest columns until a line fits. */
void FitWidths(std::vector<std::size_t>& widths, std::optional<std::size_t> columns) {
  constexpr std::size_t kNarrowest = 4;
  if (widths.empty() || !columns) {
    return;
  }
  std::size_t total = kColumnGap * (widths.size() - 1);
  for (const std::size_t width : widths) {
    total += width;
  }
  while (total > *columns) {
    const auto widest = std::max_element(widths.begin(), widths.end());
    if (*widest <= kNarrowest) {
      return;
    }
    --*widest;
    --total;
  }
}

std::string Line(const std::vector<tagTableCell>& cells, const std::vector<std::size_t>& widths,
                 bool is_coloured) {
  std::string line;
  std::size_t gap = 0;
  for (std::size_t i = 0; i < widths.size(); ++i) {
    const std::string cell = CutToWidth(cells[i].text, widths[i]);
    const std::size_t width = DisplayWidth(cell);
    if (width != 0) {  // no blanks at the end of a line
      line.append(gap, ' ');
      line += is_coloured ? Coloured(cell, cells[i].tone) : cell;
      gap = 0;
    }
    gap += widths[i] - width + kColumnGap;
  }
  return line + "\n";
}

}  // namespace

std::string Coloured(std::string_view text, ETone tone) {
  const char* const colour = tone == ETone::kGood   ? "\x1B[32m"
                             : tone == ETone::kOpen ? "\x1B[33m"
                                                    : "\x1B[31m";
  return tone == ETone::kPlain ? std::string(text) : colour + std::string(text) + "\x1B[0m";
}

std::string TableText(const tagTable& table, const tagTableView& view, std::optional<std::size_t> width,
                      bool is_coloured) {
  tagTable shown = table;
  Sort(shown, view);
  const bool has_any = std::any_of(view.columns.begin(), view.columns.end(), [&](const std::string& heading) {
    return PlaceOf(table, heading).has_value();
  });
  if (has_any) {
    shown = WithColumns(shown, view.columns);
  }
  std::vector<tagTableCell> headings;
  std::vector<std::size_t> widths;
  for (const std::string& heading : shown.headings) {
    headings.push_back({heading});
    widths.push_back(DisplayWidth(heading));
  }
  for (const std::vector<tagTableCell>& row : shown.rows) {
    for (std::size_t i = 0; i < widths.size(); ++i) {
      widths[i] = std::max(widths[i], DisplayWidth(row[i].text));
    }
  }
  FitWidths(widths, width);
  std::string text = Line(headings, widths, is_coloured);
  for (const std::vector<tagTableCell>& row : shown.rows) {
    text += Line(row, widths, is_coloured);
  }
  return text;
}

}  // namespace tvmgr
