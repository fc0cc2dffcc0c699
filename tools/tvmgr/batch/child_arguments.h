#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "batch/printer_list.h"

namespace tvmgr {

/** An option of the user's command line, without what belongs to the whole run. */
struct tagGivenOption {
  std::string name;                /**< "--yes"; empty: arguments without an option */
  std::vector<std::string> values; /**< of a flag "true" or "false" */
};

/** What is to be done with each printer. */
struct tagGivenCommand {
  std::string name;                  /**< "set" */
  std::vector<tagGivenOption> given; /**< in the order of the parser */
  bool takes_yes = false;            /**< the command has --yes */

  /** Null when the option was not given. */
  const tagGivenOption* Find(std::string_view option) const;
};

/** The arguments of the tvmgr that works with this one printer: its choice, --json, and --yes where the command takes it. */
std::vector<std::string> ChildArguments(const tagGivenCommand& command, const tagListedPrinter& printer);

/**
 * One argument of a command line as Windows programs take it apart: in quotation marks where it has blanks, quotation
 * marks or nothing in it; backslashes are doubled in front of a quotation mark only.
 */
std::string QuoteArgument(std::string_view argument);

}  // namespace tvmgr
