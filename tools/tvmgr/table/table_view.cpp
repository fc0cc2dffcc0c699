#include "table/table_view.h"

#include <algorithm>

namespace tvmgr {
namespace {

char Folded(char c) {
  if (c == '-' || c == '_') {
    return ' ';
  }
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::string NoSuchColumn(std::string_view name, std::span<const std::string> headings) {
  std::string all;
  for (const std::string& heading : headings) {
    all += (all.empty() ? "" : ", ") + heading;
  }
  return "there is no column \"" + std::string(name) + "\"; the table has: " + all;
}

}  // namespace

std::optional<std::string> FindHeading(std::string_view name, std::span<const std::string> headings) {
  const auto found = std::find_if(headings.begin(), headings.end(), [&](const std::string& heading) {
    return std::equal(name.begin(), name.end(), heading.begin(), heading.end(),
                      [](char a, char b) { return Folded(a) == Folded(b); });
  });
  return found == headings.end() ? std::nullopt : std::optional(*found);
}

std::string ReadColumns(std::string_view text, std::span<const std::string> headings, tagTableView& view) {
  for (;;) {
    const std::size_t comma = std::min(text.find(','), text.size());
    const std::string_view name = text.substr(0, comma);
    const std::optional<std::string> heading = FindHeading(name, headings);
    if (!heading) {
      return NoSuchColumn(name, headings);
    }
    if (std::find(view.columns.begin(), view.columns.end(), *heading) != view.columns.end()) {
      return "the column " + *heading + " is named twice";
    }
    view.columns.push_back(*heading);
    if (comma == text.size()) {
      return {};
    }
    text.remove_prefix(comma + 1);
  }
}

std::string ReadSort(std::string_view text, std::span<const std::string> headings, tagTableView& view) {
  constexpr std::string_view kDescending = ":desc";
  view.is_descending = text.ends_with(kDescending);
  if (view.is_descending) {
    text.remove_suffix(kDescending.size());
  }
  const std::optional<std::string> heading = FindHeading(text, headings);
  if (!heading) {
    return NoSuchColumn(text, headings);
  }
  view.sort = *heading;
  return {};
}

}  // namespace tvmgr
