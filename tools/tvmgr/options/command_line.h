#pragma once

#include <string>
#include <vector>

namespace tvmgr {

/**
 * Reads the command line and runs the command that it names.
 *
 * @param arguments  UTF-8, without the program's name
 * @return the program's exit code
 */
int RunCommandLine(std::vector<std::string> arguments);

}  // namespace tvmgr
