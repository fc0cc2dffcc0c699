#include "profile/json_lines.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <nlohmann/json.hpp>

namespace tvmgr {
namespace {

using Json = nlohmann::json;

constexpr std::size_t kDeepest = 8;

/** Walks through the text and counts what it has passed. */
class CCountingIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  CCountingIterator(const char* at, std::size_t* passed) : at_(at), passed_(passed) {}
  const char& operator*() const { return *at_; }
  CCountingIterator& operator++() {
    ++at_;
    ++*passed_;
    return *this;
  }
  CCountingIterator operator++(int) {
    CCountingIterator before = *this;
    ++*this;
    return before;
  }
  bool operator==(const CCountingIterator& other) const { return at_ == other.at_; }

 private:
  const char* at_;
  std::size_t* passed_;
};

/** Builds the values; the parser says when it has read one, and the count of what was passed, where. */
class CBuilder {
 public:
  CBuilder(std::string_view text, const std::size_t& passed) : text_(text), passed_(passed) {}

  bool null() { return Add(EJsonKind::kNull, {}); }                                        // NOLINT
  bool boolean(bool value) { return Add(EJsonKind::kBoolean, value ? "true" : "false"); }  // NOLINT
  bool number_integer(std::int64_t value) {
    return Add(EJsonKind::kNumber, std::to_string(value));
  }  // NOLINT
  bool number_unsigned(std::uint64_t value) {
    return Add(EJsonKind::kNumber, std::to_string(value));
  }                                                                                             // NOLINT
  bool number_float(double, const std::string& text) { return Add(EJsonKind::kNumber, text); }  // NOLINT
  bool string(std::string& text) { return Add(EJsonKind::kText, text); }                        // NOLINT
  bool binary(Json::binary_t&) { return false; }                                                // NOLINT
  bool start_object(std::size_t) { return Open(EJsonKind::kObject); }                           // NOLINT
  bool start_array(std::size_t) { return Open(EJsonKind::kList); }                              // NOLINT
  bool end_object() { return Close(); }                                                         // NOLINT
  bool end_array() { return Close(); }                                                          // NOLINT
  bool key(std::string& text) {                                                                 // NOLINT
    name_ = text;
    name_line_ = Line();
    return true;
  }
  bool parse_error(std::size_t, const std::string&, const Json::exception& error) {  // NOLINT
    const std::string text = error.what();
    const std::size_t begin = text.find(": ");
    // A line of its own stands in front of the words.
    throw CFileProblem(Line(),
                       "this is no JSON: " + (begin == std::string::npos ? text : text.substr(begin + 2)));
  }

  tagJsonValue Root() { return std::move(root_); }

 private:
  // A number is known to be over when the character behind it was read, which may be a line end.
  std::size_t Line() {
    for (; counted_ + 1 < passed_; ++counted_) {
      line_ += text_[counted_] == '\n' ? 1U : 0U;
    }
    return line_;
  }

  bool Add(EJsonKind kind, const std::string& text) {
    tagJsonValue value{kind, name_line_ != 0 ? name_line_ : Line(), std::move(name_), text, {}};
    name_.clear();
    name_line_ = 0;
    if (open_.empty()) {
      root_ = std::move(value);
    } else {
      open_.back()->items.push_back(std::move(value));
    }
    return true;
  }

  bool Open(EJsonKind kind) {
    if (open_.size() == kDeepest) {
      throw CFileProblem(Line(), "this is nested too deeply");
    }
    Add(kind, {});
    open_.push_back(open_.empty() ? &root_ : &open_.back()->items.back());
    return true;
  }

  bool Close() {
    open_.pop_back();
    return true;
  }

  std::string_view text_;
  const std::size_t& passed_;
  std::size_t counted_ = 0; /**< bytes whose line ends are in line_ */
  std::size_t line_ = 1;
  tagJsonValue root_;
  std::vector<tagJsonValue*>
      open_; /**< stay where they are while they are open: only the innermost one grows */
  std::string name_;
  std::size_t name_line_ = 0;
};

}  // namespace

tagJsonValue ReadJsonLines(std::string_view text, std::size_t largest) {
  if (text.size() > largest) {
    throw CFileProblem(0, "it is larger than " + std::to_string(largest) + " bytes");
  }
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
    throw CFileProblem(1, "this is UTF-16: save the file as UTF-8");
  }
  if (text.find_first_not_of(" \t\r\n") == std::string_view::npos) {
    throw CFileProblem(0, "it is empty");
  }
  std::size_t passed = 0;
  CBuilder builder(text, passed);
  Json::sax_parse(CCountingIterator(text.data(), &passed),
                  CCountingIterator(text.data() + text.size(), &passed), &builder, Json::input_format_t::json,
                  true, true);
  return builder.Root();
}

std::string QuoteJson(std::string_view utf8) {
  return Json(utf8).dump(-1, ' ', false, Json::error_handler_t::replace);
}

void RequireMembers(const tagJsonValue& object, const std::vector<std::string_view>& names) {
  for (const tagJsonValue& member : object.items) {
    if (std::find(names.begin(), names.end(), member.name) == names.end()) {
      throw CFileProblem(member.line, "there is no member " + QuoteJson(member.name) + " here");
    }
    const auto same = [&](const tagJsonValue& other) { return other.name == member.name; };
    const auto first = std::find_if(object.items.begin(), object.items.end(), same);
    if (&*first != &member) {
      throw CFileProblem(member.line, QuoteJson(member.name) + " stands in line " +
                                          std::to_string(first->line) + " already");
    }
  }
}

const tagJsonValue* FindMember(const tagJsonValue& object, std::string_view name) {
  for (const tagJsonValue& member : object.items) {
    if (member.name == name) {
      return &member;
    }
  }
  return nullptr;
}

void RequireKind(const tagJsonValue& value, EJsonKind kind, std::string_view subject) {
  constexpr std::string_view kNames[] = {"null",   "true or false", "a number", "a text in quotes",
                                         "a list", "an object"};
  if (value.kind != kind) {
    throw CFileProblem(value.line, std::string(subject) + " is to be " +
                                       std::string(kNames[static_cast<std::size_t>(kind)]) + ", not " +
                                       std::string(kNames[static_cast<std::size_t>(value.kind)]));
  }
}

}  // namespace tvmgr
