#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <vector>

#include "options/options.h"

namespace tvmgr {

/** A command of the parser, and what runs it once its arguments are read. */
struct tagCommand {
  CLI::App* parser;
  std::function<int()> run;
};

// Each adds its commands to the program's parser; of commands within one another the inner ones come first.
// `global` has to outlive the commands.
void AddSettingCommands(CLI::App& program, const tagGlobalOptions& global, std::vector<tagCommand>& commands);
void AddDataCommands(CLI::App& program, const tagGlobalOptions& global, std::vector<tagCommand>& commands);
void AddBackupCommands(CLI::App& program, const tagGlobalOptions& global, std::vector<tagCommand>& commands);
void AddDiscoveryCommands(CLI::App& program, const tagGlobalOptions& global,
                          std::vector<tagCommand>& commands);

}  // namespace tvmgr
