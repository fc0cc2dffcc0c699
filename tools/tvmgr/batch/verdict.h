#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tvmgr {

/** How a tvmgr that was started for one printer came to its end. */
enum class EChildEnd {
  kItself,      /**< with an exit code */
  kTooLong,     /**< it took longer than it may, and was ended */
  kTooMuch,     /**< it wrote more than any command does, and was ended */
  kInterrupted, /**< it was ended after Ctrl-C was pressed twice */
  kNotStarted   /**< there was none: Ctrl-C came first, or the system made no process */
};

struct tagChildRun {
  EChildEnd end = EChildEnd::kNotStarted;
  std::uint32_t exit_code = 0; /**< of kItself */
  std::string out;             /**< what it wrote to stdout */
  std::string err;             /**< and to stderr */
  std::uint64_t took_ms = 0;   /**< from its start to its end */
  std::string why;             /**< of kNotStarted, kTooLong: in words */
};

/** What became of one printer. */
struct tagPrinterVerdict {
  /** "done", "failed", "refused", "not proved", "unreachable", "no verdict", "not started". */
  std::string word;
  std::optional<int> exit_code;     /**< of its tvmgr; none: it told none that counts */
  std::string reason;               /**< why it is not done; empty when it is */
  std::string result;               /**< what was found out, in words; may be empty */
  nlohmann::ordered_json document;  /**< what its tvmgr reported; null: nothing that counts */
  std::vector<std::string> remarks; /**< of its tvmgr */
  std::uint64_t took_ms = 0;

  bool IsDone() const { return word == "done"; }
};

/**
 * Judges by the report alone, which has to be whole, of this command, and say what the exit code says: a process that
 * crashed, was ended or cut short proves nothing.
 */
tagPrinterVerdict Judge(const tagChildRun& run, std::string_view command);

/** A printer that was not begun. */
tagPrinterVerdict NotStarted(const std::string& word, const std::string& reason);

/** The result of a command on one printer in a few words, from its JSON document: "CLR,Z=600", "3 of 5 settings answered". */
std::string DocumentWords(const nlohmann::ordered_json& document);

/** Why settings or files of the document are not well, a line for each, of many the first ones; "\n" in front of each. */
std::string DocumentReasons(const nlohmann::ordered_json& document);

}  // namespace tvmgr
