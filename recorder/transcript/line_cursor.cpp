#include "transcript/line_cursor.h"

#include <algorithm>

#include "transcript/escape.h"
#include "transcript/format.h"

namespace recorder {

std::string_view CLineCursor::Word() {
  const std::string_view word = rest_.substr(0, rest_.find(' '));
  rest_.remove_prefix(word.size());
  SkipBlanks();
  return word;
}

bool CLineCursor::Skip(std::string_view word) {
  if (rest_.substr(0, rest_.find(' ')) != word) {
    return false;
  }
  Word();
  return true;
}

std::optional<std::uint32_t> CLineCursor::Count() {
  return Skip(kNull) ? std::nullopt : std::optional(Number<std::uint32_t>());
}

std::uint64_t CLineCursor::Time() {
  constexpr std::size_t kDecimals = 6;
  constexpr std::uint64_t kMostSeconds = 1'000'000'000'000;
  const std::string_view word = Word();
  const std::size_t point = word.find('.');
  CLineCursor seconds(word.substr(0, point));
  CLineCursor decimals(point == word.npos ? std::string_view() : word.substr(point + 1));
  const bool has_decimals = decimals.rest_.size() == kDecimals;
  const auto whole = seconds.Number<std::uint64_t>();
  const auto part = decimals.Number<std::uint64_t>();
  has_failed_ =
      has_failed_ || !has_decimals || seconds.has_failed_ || decimals.has_failed_ || whole > kMostSeconds;
  return has_failed_ ? 0 : whole * kMicrosecondsPerSecond + part;
}

std::optional<std::string> CLineCursor::Bytes(std::size_t expected) {
  const std::optional<std::string_view> quoted = Quoted();
  if (!quoted) {
    return std::nullopt;
  }
  std::optional<std::string> bytes = UnescapeBytes(*quoted, expected);
  has_failed_ = has_failed_ || !bytes;
  return bytes;
}

std::optional<std::u16string> CLineCursor::Text() {
  const std::optional<std::string_view> quoted = Quoted();
  if (!quoted) {
    return std::nullopt;
  }
  std::optional<std::u16string> text = UnescapeUnits(*quoted);
  has_failed_ = has_failed_ || !text || text->size() > kLongestText;
  return text;
}

void CLineCursor::SkipBlanks() {
  rest_.remove_prefix(std::min(rest_.find_first_not_of(' '), rest_.size()));
}

std::optional<std::string_view> CLineCursor::Quoted() {
  if (Skip(kNull)) {
    return std::nullopt;
  }
  std::size_t end = 1;
  while (end < rest_.size() && rest_[end] != '"') {
    end += rest_[end] == '\\' ? 2 : 1;
  }
  if (rest_.empty() || rest_[0] != '"' || end >= rest_.size()) {
    has_failed_ = true;
    return std::nullopt;
  }
  const std::string_view quoted = rest_.substr(1, end - 1);
  rest_.remove_prefix(end + 1);
  has_failed_ = has_failed_ || (!rest_.empty() && rest_[0] != ' ');
  SkipBlanks();
  return quoted;
}

}  // namespace recorder
