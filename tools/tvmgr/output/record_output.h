#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tvmgr {

/** No such member in the JSON object. */
struct tagAbsent {};

/** One cell: what a table shows and what JSON holds (null: nullptr). All text is UTF-8. */
struct tagCell {
  using Value =
      std::variant<tagAbsent, std::nullptr_t, bool, std::int64_t, std::string, std::vector<std::string>>;

  std::string shown;
  Value value;

  static tagCell Text(std::string text);
  static tagCell Number(std::int64_t number);
  static tagCell Null(std::string shown) { return {std::move(shown), nullptr}; }
  static tagCell Absent(std::string shown = {}) { return {std::move(shown), tagAbsent{}}; }
};

/** Records with named members, printed on stdout as an aligned table or as JSON. */
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
   * are cut so that lines fit the terminal.
   */
  void PrintTable() const;
  /** All records as one JSON array. */
  void PrintJson() const;
  /** The first record alone as a JSON object; on one line when compact. */
  void PrintJsonObject(bool compact = false) const;

 private:
  std::vector<tagColumn> columns_;
  std::vector<std::vector<tagCell>> rows_;
};

/** Writes bytes to stdout as they are; ends the command when they cannot be written. */
void WriteOutput(std::string_view bytes);

}  // namespace tvmgr
