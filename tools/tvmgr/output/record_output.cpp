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

// What the command line says of the one table of a run.
tagTableView table_view;

std::vector<std::string> NamedColumns() {
  std::vector<std::string> named = table_view.columns;
  if (!table_view.sort.empty()) {
    named.push_back(table_view.sort);
  }
  return named;
}

CUsageError NoColumn(const std::string& name, const std::string& mode) {
  return CUsageError("--columns and --sort: the table has no column \"" + name + "\" " + mode);
}

}  // namespace

tagCell tagCell::Text(std::string text) {
  return {text, text};
}

tagCell tagCell::Verdict(std::string word, ETone tone) {
  return {word, word, tone};
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
  tagTable table;
  table.rows.resize(rows_.size());
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (columns_[i].heading.empty()) {
      continue;
    }
    table.headings.push_back(columns_[i].heading);
    for (std::size_t row = 0; row < rows_.size(); ++row) {
      // Nothing in a cell can break its line.
      table.rows[row].push_back({MakeVisible(rows_[row][i].shown), rows_[row][i].tone});
    }
  }
  WriteOutput(TableText(table, table_view, OutputColumns(), IsOutputColoured()));
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

void SetTableView(const tagTableView& view) {
  table_view = view;
}

void RequireTable(const std::vector<std::string>& headings, const std::string& mode) {
  for (const std::string& name : NamedColumns()) {
    if (headings.empty()) {
      throw CUsageError("--columns and --sort: there is no table " + mode);
    }
    if (std::find(headings.begin(), headings.end(), name) == headings.end()) {
      throw NoColumn(name, mode);
    }
  }
}

void RefuseColumn(const std::string& heading, const std::string& mode) {
  const std::vector<std::string> named = NamedColumns();
  if (std::find(named.begin(), named.end(), heading) != named.end()) {
    throw NoColumn(heading, mode);
  }
}

std::string ShownVerdict(std::string_view word, ETone tone) {
  return IsOutputColoured() ? Coloured(word, tone) : std::string(word);
}

void WriteOutput(std::string_view bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() || std::fflush(stdout) != 0) {
    throw CFailure("the output cannot be written (disk full, or its reader has ended)");
  }
}

}  // namespace tvmgr
