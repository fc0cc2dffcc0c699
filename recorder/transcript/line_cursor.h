#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace recorder {

/// Walks through the words of one line. What does not fit leaves it failed, and gives nothing from then on.
class CLineCursor {
 public:
  explicit CLineCursor(std::string_view line) : rest_(line) { SkipBlanks(); }

  bool HasFailed() const { return has_failed_; }
  bool IsAtEnd() const { return rest_.empty(); }

  /// What stands up to the next blank.
  std::string_view Word();
  /// Passes over the word when it is the next one.
  bool Skip(std::string_view word);
  void Require(std::string_view word) { has_failed_ = !Skip(word) || has_failed_; }

  template <typename Integer>
  Integer Number() {
    Integer value = 0;
    const std::string_view word = Word();
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    has_failed_ = has_failed_ || word.empty() || error != std::errc{} || end != word.data() + word.size();
    return has_failed_ ? Integer{} : value;
  }
  /// A number, or nothing for the word null.
  std::optional<std::uint32_t> Count();
  /// Seconds with six decimals; in microseconds.
  std::uint64_t Time();
  /// What stands between quotation marks, or nothing for the word null.
  std::optional<std::string> Bytes(std::size_t expected);
  std::optional<std::u16string> Text();

 private:
  void SkipBlanks();
  std::optional<std::string_view> Quoted();

  std::string_view rest_;
  bool has_failed_ = false;
};

}  // namespace recorder
