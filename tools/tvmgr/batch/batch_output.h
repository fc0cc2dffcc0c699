#pragma once

#include <string>
#include <vector>

#include "batch/printer_list.h"
#include "batch/verdict.h"
#include "options/options.h"

namespace tvmgr {

/** The table of verdicts and why not all are done, or the members of the JSON document. */
void PrintVerdicts(const tagGlobalOptions& global, const std::string& command,
                   const std::vector<tagListedPrinter>& printers,
                   const std::vector<tagPrinterVerdict>& verdicts);

/**
 * Ends the command unless it was done on all printers: with kExitSomePrinters, or, where each of them says that the command
 * line or an input file is wrong, with the exit code for that.
 *
 * @param search_problem  why they may not be all; empty: they are
 */
void RequireAllDone(const std::vector<tagListedPrinter>& printers,
                    const std::vector<tagPrinterVerdict>& verdicts, const std::string& search_problem);

}  // namespace tvmgr
