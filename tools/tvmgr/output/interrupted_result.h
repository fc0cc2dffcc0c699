#pragma once

#include <string>

namespace tvmgr {

/**
 * Takes over what an ended worker had found out (ReportFound): the members become those of the JSON result; without
 * --json its settings or files stand with their verdicts in a table on stdout, when any of them was sent. Text that is no such object says nothing.
 */
void TellInterruptedResult(const std::string& found, bool json);

}  // namespace tvmgr
