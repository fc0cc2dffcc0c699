#include "output/record_output.h"

#include <algorithm>
#include <cstdio>

#include "output/command_error.h"
#include "output/json_output.h"
#include "output/text_encoding.h"

namespace tvmgr {
namespace {

Json ToJson(const std::vector<CRecordOutput::tagColumn>& columns, const std::vector<tagCell>& cells) {
  Json object = Json::object();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    std::visit(
        [&](const auto& value) {
          if constexpr (!std::is_same_v<std::decay_t<decltype(value)>, tagAbsent>) {
            object[columns[i].key] = value;
          }
        },
        cells[i].value);
  }
  return object;
}

}  // namespace

tagCell tagCell::Text(std::string text) {
  return {text, text};
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
  std::vector<std::size_t> shown;
  std::vector<std::size_t> widths;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (columns_[i].heading.empty()) {
      continue;
    }
    std::size_t width = DisplayWidth(columns_[i].heading);
    for (const std::vector<tagCell>& row : rows_) {
      width = std::max(width, DisplayWidth(row[i].shown));
    }
    shown.push_back(i);
    widths.push_back(width);
  }
  std::string text;
  const auto append_line = [&](const auto& cell_text) {
    std::string line;
    for (std::size_t n = 0; n < shown.size(); ++n) {
      const std::string& cell = cell_text(shown[n]);
      line += cell;
      if (n + 1 < shown.size()) {
        line.append(widths[n] - DisplayWidth(cell) + 2, ' ');
      }
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  };
  append_line([&](std::size_t i) -> const std::string& { return columns_[i].heading; });
  for (const std::vector<tagCell>& row : rows_) {
    append_line([&](std::size_t i) -> const std::string& { return row[i].shown; });
  }
  WriteOutput(text);
}

void CRecordOutput::PrintJson() const {
  Json array = Json::array();
  for (const std::vector<tagCell>& row : rows_) {
    array.push_back(ToJson(columns_, row));
  }
  tvmgr::PrintJson(array);
}

void CRecordOutput::PrintJsonObject(bool compact) const {
  tvmgr::PrintJson(rows_.empty() ? Json::object() : ToJson(columns_, rows_.front()), compact);
}

void WriteOutput(std::string_view bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() || std::fflush(stdout) != 0) {
    throw CFailure("the output cannot be written (disk full, or its reader has ended)");
  }
}

}  // namespace tvmgr
