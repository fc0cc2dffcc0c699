#pragma once

#include <string>
#include <vector>

namespace tvmgr {

/** What can be typed behind a command. */
struct tagCompletionOption {
  std::vector<std::string> names; /**< "--port", "-o" */
  bool takes_value = false;
  std::vector<std::string> choices; /**< for the value; empty: anything, such as a file */
};

struct tagCompletionCommand {
  std::string name; /**< "backup check"; empty: the program itself */
  std::vector<std::string> subcommands;
  std::vector<std::string> arguments; /**< that can be listed; empty: anything, such as a file */
  std::vector<tagCompletionOption> options;
};

/** The first is the program itself; its options are those of every command. */
using CompletionModel = std::vector<tagCompletionCommand>;

/** A script for bash; to be sourced. */
std::string BashCompletion(const CompletionModel& model);

/** A script for PowerShell 5.1 and later; likewise. */
std::string PowerShellCompletion(const CompletionModel& model);

}  // namespace tvmgr
