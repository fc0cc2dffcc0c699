#include "output/setting_cell.h"

#include "output/text_encoding.h"

namespace tvmgr {

tagCell ValueCell(const std::optional<std::string>& bytes) {
  if (!bytes) {
    return tagCell::Null("not answered");
  }
  return {EscapeBytes(*bytes), FromAnsi(*bytes).value_or(EscapeBytes(*bytes))};
}

tagCell HexCell(const std::optional<std::string>& bytes) {
  if (!bytes || IsPlainAscii(*bytes)) {
    return tagCell::Null("");
  }
  return tagCell::Text(ToHex(*bytes));
}

}  // namespace tvmgr
