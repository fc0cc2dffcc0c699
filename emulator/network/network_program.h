#pragma once

#include <atomic>
#include <string>
#include <vector>

namespace lxemu {

/// The program lxemu_network: reads the arguments (UTF-8, without the program's name), serves the printers
/// until `stop` is set, and returns the exit code.
int RunNetworkProgram(std::vector<std::string> arguments, const std::atomic<bool>& stop);

}  // namespace lxemu
