#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace tvmgr {

/** Exit codes of the program, the same for every command; docs/tvmgr.md has the table. */
constexpr int kExitDone = 0;         /**< done, and seen to be done */
constexpr int kExitFailed = 1;       /**< not done, refused, damaged or different */
constexpr int kExitUsage = 2;        /**< wrong usage: nothing was done */
constexpr int kExitUnproved = 3;     /**< done in part, or done and not to be proved */
constexpr int kExitUnreachable = 4;  /**< the printer cannot be reached, or does not answer */
constexpr int kExitInputFile = 5;    /**< an input file cannot be read, or is of another kind */
constexpr int kExitSomePrinters = 6; /**< of several printers some are not done: each has a verdict */

/** What a program wants to know of an error apart from its text. */
struct tagErrorDetails {
  std::optional<std::int32_t> code; /**< of the module or the port library; none: no call failed */
  std::string step;                 /**< the call that failed, in words; empty: none did */
  std::string advice;               /**< what to do about it; empty: the text has it, or there is none */
};

/** Ends a command: the text (UTF-8, one sentence) goes to stderr, the code to the caller of the program. */
class CCommandError : public std::runtime_error {
 public:
  CCommandError(int exit_code, const std::string& text, tagErrorDetails details = {})
      : std::runtime_error(text), exit_code_(exit_code), details_(std::move(details)) {}
  int ExitCode() const { return exit_code_; }
  const tagErrorDetails& Details() const { return details_; }

 private:
  int exit_code_;
  tagErrorDetails details_;
};

/** The user asked for something that cannot be asked for. */
class CUsageError : public CCommandError {
 public:
  explicit CUsageError(const std::string& text) : CCommandError(kExitUsage, text) {}
};

/** The command was understood but did not succeed. */
class CFailure : public CCommandError {
 public:
  explicit CFailure(const std::string& text, int exit_code = kExitFailed, tagErrorDetails details = {})
      : CCommandError(exit_code, text, std::move(details)) {}
};

/** The work was done in part only, or there is no proof that it was done. */
class CUnproved : public CFailure {
 public:
  explicit CUnproved(const std::string& text) : CFailure(text, kExitUnproved) {}
};

/** The printer cannot be reached, or does not answer. */
class CUnreachable : public CFailure {
 public:
  explicit CUnreachable(const std::string& text, const std::string& advice = {})
      : CFailure(advice.empty() ? text : text + ": " + advice, kExitUnreachable, {{}, {}, advice}) {}
};

/** A file of this computer cannot be read, or is not of the kind that the command wants. */
class CInputFileError : public CFailure {
 public:
  explicit CInputFileError(const std::string& text) : CFailure(text, kExitInputFile) {}
};

/** A file of this computer cannot be written: not the printer's fault. */
class COutputFileError : public CFailure {
 public:
  explicit COutputFileError(const std::string& text) : CFailure(text) {}
};

}  // namespace tvmgr
