#include "output/record_output.h"

#include <algorithm>
#include <cstdio>

#include "output/command_error.h"
#include "output/console.h"
#include "output/json_output.h"
#include "output/text_layout.h"

namespace tvmgr {
namespace {

Json ToJson(const std::vector<CRecordOutput::tagColumn>& columns, const std::vector<tagCell>& cells) {
  Json object = Json::object();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    std::visit([&](const auto& value) { object[columns[i].key] = value; }, cells[i].value);
  }
  return object;
}

constexpr std::size_t kColumnGap = 2;

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

}  // namespace

tagCell tagCell::Text(std::string text) {
  return {text, text};
}

tagCell tagCell::TextOrNull(std::string text) {
  return text.empty() ? Null({}) : Text(std::move(text));
}

tagCell tagCell::Number(std::int64_t number) {
  return {std::to_string(number), number};
}

void CRecordOutput::Add(std::vector<tagCell> cells) {
  cells.resize(columns_.size());
  rows_.push_back(std::move(cells));
}

void CRecordOutput::PrintTable() const {
  if (rows_.empty()) {
    return;
  }
  // Line by line, headings first, what is shown of each; nothing in a cell can break its line.
  std::vector<std::vector<std::string>> lines(1 + rows_.size());
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (columns_[i].heading.empty()) {
      continue;
    }
    lines[0].push_back(columns_[i].heading);
    for (std::size_t row = 0; row < rows_.size(); ++row) {
      lines[row + 1].push_back(MakeVisible(rows_[row][i].shown));
    }
  }
  std::vector<std::size_t> widths(lines[0].size());
  for (const std::vector<std::string>& line : lines) {
    for (std::size_t n = 0; n < widths.size(); ++n) {
      widths[n] = std::max(widths[n], DisplayWidth(line[n]));
    }
  }
  FitWidths(widths, OutputColumns());
  std::string text;
  for (const std::vector<std::string>& cells : lines) {
    std::string line;
    for (std::size_t n = 0; n < widths.size(); ++n) {
      const std::string cell = CutToWidth(cells[n], widths[n]);
      line += cell;
      line.append(widths[n] - DisplayWidth(cell) + kColumnGap, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  }
  WriteOutput(text);
}

void CRecordOutput::SetAsJson(const char* member) const {
  Json array = Json::array();
  for (const std::vector<tagCell>& row : rows_) {
    array.push_back(ToJson(columns_, row));
  }
  SetJsonResult({{member, array}});
}

void CRecordOutput::SetAsJson() const {
  SetJsonResult(ToJson(columns_, rows_.at(0)));
}

void WriteOutput(std::string_view bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() || std::fflush(stdout) != 0) {
    throw CFailure("the output cannot be written (disk full, or its reader has ended)");
  }
}

}  // namespace tvmgr
