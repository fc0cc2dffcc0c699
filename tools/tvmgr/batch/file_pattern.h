#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "batch/printer_list.h"

namespace tvmgr {

/** The day and time of a run, for the names of its files. */
struct tagRunTime {
  std::string date; /**< "2031-05-04" */
  std::string time; /**< "13-14-15" */
};

/**
 * One file name for each printer, made of a pattern with {printer} (what chooses it), {name} (what it is called, else
 * as {printer}), {number} (its place in the list), {date} and {time}; "{{" is a brace. What Windows does not allow in
 * file names becomes "_". Ends the command (usage) when two printers would get one file, and at braces with anything else
 * in them.
 *
 * @param option  that holds the pattern, for messages
 */
std::vector<std::string> ExpandPattern(std::string_view pattern, const std::string& option,
                                       const std::vector<tagListedPrinter>& printers, const tagRunTime& now);

}  // namespace tvmgr
