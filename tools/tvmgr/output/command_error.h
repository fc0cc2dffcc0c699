#pragma once

#include <stdexcept>
#include <string>

namespace tvmgr {

/** Exit codes of the program. */
constexpr int kExitDone = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

/** Ends a command: the text (UTF-8, one sentence) goes to stderr, the code to the caller of the program. */
class CCommandError : public std::runtime_error {
 public:
  CCommandError(int exit_code, const std::string& text) : std::runtime_error(text), exit_code_(exit_code) {}
  int ExitCode() const { return exit_code_; }

 private:
  int exit_code_;
};

/** The user asked for something that cannot be asked for. */
class CUsageError : public CCommandError {
 public:
  explicit CUsageError(const std::string& text) : CCommandError(kExitUsage, text) {}
};

/** The command was understood but did not succeed. */
class CFailure : public CCommandError {
 public:
  explicit CFailure(const std::string& text) : CCommandError(kExitFailed, text) {}
};

}  // namespace tvmgr
