#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "table/table_text.h"

namespace tvmgr {

/** One cell: what a table shows and what JSON holds (null: nullptr). All text is UTF-8. */
struct tagCell {
  using Value = std::variant<std::nullptr_t, bool, std::int64_t, std::string, std::vector<std::string>>;

  std::string shown;
  Value value;
  ETone tone = ETone::kPlain; /**< its colour on a terminal */

  static tagCell Text(std::string text);
  /** A word that judges, "written". */
  static tagCell Verdict(std::string word, ETone tone);
  /** As Text; in JSON an empty text is null. */
  static tagCell TextOrNull(std::string text);
  static tagCell Number(std::int64_t number);
  static tagCell Null(std::string shown) { return {std::move(shown), nullptr}; }
};

/** Records with named members, for stdout as an aligned table or for the JSON document. */
class CRecordOutput {
 public:
  struct tagColumn {
    std::string key;     /**< member of the JSON object */
    std::string heading; /**< of the table; empty: the column is in JSON only */
  };

  explicit CRecordOutput(std::vector<tagColumn> columns) : columns_(std::move(columns)) {}

  /** Appends a record: one cell for each column. */
  void Add(std::vector<tagCell> cells);
  bool IsEmpty() const { return rows_.empty(); }

  /**
   * The table with its headings; nothing when there are no records. Control characters are made visible, and cells
   * are cut so that lines fit the terminal. As the table's view has it.
   */
  void PrintTable() const;
  /** Makes an array of all records the named member of the JSON result. */
  void SetAsJson(const char* member) const;
  /** Makes the members of the first record those of the JSON result. */
  void SetAsJson() const;

 private:
  std::vector<tagColumn> columns_;
  std::vector<std::vector<tagCell>> rows_;
};

/** What of the tables of this run is shown, and in which order. */
void SetTableView(const tagTableView& view);

/**
 * Ends the command when the view names a column that is not among these: for commands that print one table or another.
 *
 * @param headings  empty: no table is printed
 * @param mode  "with --files", behind what is refused
 */
void RequireTable(const std::vector<std::string>& headings, const std::string& mode);

/** Ends the command when the view names this column: see RequireTable. */
void RefuseColumn(const std::string& heading, const std::string& mode);

/** A word that judges, for stdout: in the colour of its tone where colours are shown. */
std::string ShownVerdict(std::string_view word, ETone tone);

/** Writes bytes to stdout as they are; ends the command when they cannot be written. */
void WriteOutput(std::string_view bytes);

}  // namespace tvmgr
