#pragma once

#include <string>
#include <vector>

#include "batch/printer_list.h"
#include "options/options.h"

namespace tvmgr {

/** The printers of a run, each once. */
struct tagBatchPrinters {
  std::vector<tagListedPrinter> printers;
  std::vector<std::string> problems; /**< one for each printer: why it cannot be worked with; empty: it can */
  std::string search_problem;        /**< why "found" may not be all there are; empty: nothing went wrong */
};

/**
 * The printers that --printers names: a list, a file, or "found". Searches where it takes a search; ends the command when
 * the list or the file cannot be read, or nothing was found. What is named twice is taken once, with a remark.
 */
tagBatchPrinters ListPrinters(const tagGlobalOptions& global, const std::string& text);

}  // namespace tvmgr
