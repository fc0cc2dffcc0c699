#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "options/options.h"
#include "options/parser.h"
#include "printer/worker.h"

namespace tvmgr {

/** A command of the parser, and what runs it once its arguments are read. */
struct tagCommand {
  CParser parser;
  std::function<int()> run;
  std::optional<tagWatch> watch = {}; /**< of a command that works with a printer */
};

// Words for the case that the work has to be ended: what the printer may be left with.
constexpr char kLeftByReading[] =
    "Its resolutions and its mode (settings 3, 4, 5, 84) may stand at 600 and D, as they do while it is "
    "read: look at them with \"tvmgr get\" when it answers again";
constexpr char kLeftByWriting[] =
    "What of it the printer has taken is not known; also its resolutions and its mode (settings 3, 4, 5, 84) "
    "may stand at 600 and D: look at it when it answers again, and repeat the command";

constexpr char kDryRunHelp[] = "only read the printer, and show what would be done";
// What --dry-run cannot promise.
constexpr char kDryRunFooter[] =
    "--dry-run changes nothing beyond what reading does: a printer whose resolutions are not 600 or whose\n"
    "mode is not D is put there while it is read, and back, and saves its settings each time.";

// Each adds its commands to the program's parser; of commands within one another the inner ones come first.
// `global` has to outlive the commands.
void AddSettingCommands(const CParser& program, const tagGlobalOptions& global,
                        std::vector<tagCommand>& commands);
void AddDataCommands(const CParser& program, const tagGlobalOptions& global,
                     std::vector<tagCommand>& commands);
void AddBackupCommands(const CParser& program, const tagGlobalOptions& global,
                       std::vector<tagCommand>& commands);
void AddToolCommands(const CParser& program, const tagGlobalOptions& global,
                     std::vector<tagCommand>& commands);
void AddDiscoveryCommands(const CParser& program, const tagGlobalOptions& global,
                          std::vector<tagCommand>& commands);

void AddProfileCommands(const CParser& program, const tagGlobalOptions& global,
                        std::vector<tagCommand>& commands);

/** The option --labels of a command that shows or writes settings. */
void AddLabelsOption(const CParser& parser, std::string& labels);

/**
 * The options --columns and --sort of a command that prints one table, with these headings. They are not for
 * --json, whose documents have all members, and not for --printers, which has a table of its own.
 */
void AddTableOptions(const CParser& parser, std::vector<std::string> headings);

}  // namespace tvmgr
