#pragma once

#include "batch/child_arguments.h"
#include "options/options.h"

namespace tvmgr {

/**
 * Runs a command on several printers: each in a tvmgr of its own, with a choice of its own, several at a time. Asks once,
 * before anything is started; shows how it goes, then a verdict for each printer, and why those failed that did. Ends the
 * command with kExitSomePrinters unless it was done on all of them.
 */
int RunOnPrinters(const tagGlobalOptions& global, const tagBatchOptions& options, tagGivenCommand command);

}  // namespace tvmgr
