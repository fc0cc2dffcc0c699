#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tvmgr {

/** What is wrong with a file that somebody has written, and in which line. */
class CFileProblem : public std::runtime_error {
 public:
  /** @param line  from 1; 0: the file as a whole */
  CFileProblem(std::size_t line, const std::string& text) : std::runtime_error(text), line_(line) {}
  std::size_t Line() const { return line_; }

 private:
  std::size_t line_;
};

enum class EJsonKind { kNull, kBoolean, kNumber, kText, kList, kObject };

/** A value of a JSON file, and where it stands. Members keep their order, doubled ones included. */
struct tagJsonValue {
  EJsonKind kind = EJsonKind::kNull;
  std::size_t line = 0; /**< in which it begins; of a member, in which its name stands */
  std::string name;     /**< of a member of an object */
  std::string text;     /**< of a text, UTF-8; of a number as it is written */
  std::vector<tagJsonValue> items;
};

/**
 * Reads a JSON file for people: comments of both kinds are skipped, a byte order mark too. Throws a CFileProblem for
 * what is no JSON, no UTF-8, nested too deeply, empty, or longer than the largest size.
 */
tagJsonValue ReadJsonLines(std::string_view text, std::size_t largest);

/** The text in quotes, as JSON writes it. Bytes that are no UTF-8 are replaced. */
std::string QuoteJson(std::string_view utf8);

/** The members of an object, each of them once, and only of these names; throws a CFileProblem otherwise. */
void RequireMembers(const tagJsonValue& object, const std::vector<std::string_view>& names);

/** The member of this name; null when there is none. */
const tagJsonValue* FindMember(const tagJsonValue& object, std::string_view name);

/** Throws a CFileProblem, which says what is wanted, unless the value is of the kind. */
void RequireKind(const tagJsonValue& value, EJsonKind kind, std::string_view subject);

}  // namespace tvmgr
