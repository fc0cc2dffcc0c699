#include "options/command_line.h"

#include <algorithm>
#include <iostream>

#include "options/command_parsers.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/text_layout.h"
#include "printer/printer_environment.h"

namespace tvmgr {
namespace {

void AddGlobalOptions(CLI::App& program, tagGlobalOptions& global) {
  CLI::Option* const device =
      program.add_option("--device", global.device, "the printer by its USB device path")
          ->envname(kDeviceVariable);
  program.add_option("--port", global.port, "the printer by its port of the print spooler")
      ->envname(kPortVariable);
  program.add_option("--address", global.address, "the printer by host name or address")
      ->envname(kAddressVariable)
      ->excludes(device);
  program.add_flag("--json", global.json, "results as JSON");
  program.add_flag("--quiet", global.quiet, "no progress and no remarks, only results and errors");
  program.add_flag("--verbose", global.verbose, "show every call of the module with its result and duration");
  program.add_flag("--no-check", global.no_check, "do not ask for the printer's status before long work");
  program.set_version_flag("-V,--version", "tvmgr " TVMGR_VERSION);
}

/** Help for terminals of 80 columns, with nothing cut off. */
class CNarrowHelp : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
    return WrapLines(CLI::Formatter::make_help(app, std::move(name), mode), 80);
  }

 private:
  /** Lines of running text are joined: where they break depends on the width. */
  std::string make_footer(const CLI::App* app) const override {
    std::string text = CLI::Formatter::make_footer(app);
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1)) {
      const bool is_within = at > 0 && at + 1 < text.size() && text[at - 1] != '\n' && text[at - 1] != ':';
      if (is_within && text[at + 1] != '\n' && text[at + 1] != ' ') {
        text[at] = ' ';
      }
    }
    return text;
  }
};

int Run(CLI::App& program, std::vector<tagCommand>& commands, std::vector<std::string> arguments) {
  // "help COMMAND" is what people type; the parser knows "COMMAND --help".
  if (!arguments.empty() && arguments.front() == "help") {
    arguments.erase(arguments.begin());
    arguments.push_back("--help");
  }
  // The parser takes the arguments from the back.
  std::reverse(arguments.begin(), arguments.end());
  try {
    program.parse(std::move(arguments));
  } catch (const CLI::ParseError& error) {
    const std::vector<std::string> unknown = program.remaining();
    if (program.get_subcommands().empty() && !unknown.empty() && unknown.front().front() != '-') {
      throw CUsageError("there is no command \"" + unknown.front() + "\"; \"tvmgr --help\" lists them");
    }
    // A request for help or the version ends the parsing, too.
    return program.exit(error, std::cout, std::cerr) == 0 ? kExitDone : kExitUsage;
  }
  for (const tagCommand& command : commands) {
    if (command.parser->parsed()) {
      return command.run();
    }
  }
  return kExitUsage;
}

}  // namespace

int RunCommandLine(std::vector<std::string> arguments) {
  PreparePrinterEnvironment(arguments);
  tagGlobalOptions global;
  CLI::App program("Reads and changes the settings and the stored files of LX-R4100 label printers.",
                   "tvmgr");
  // These three hold for the commands added later. Paths begin with "/", so that is no option.
  program.allow_windows_style_options(false);
  program.fallthrough();
  program.formatter(std::make_shared<CNarrowHelp>());
  program.get_formatter()->column_width(30);
  program.require_subcommand(1);
  program.footer(
      "Without --device, --port and --address the printer of \"tvmgr use\" is taken, else the port library\n"
      "chooses. Options may stand before or after the command; \"tvmgr COMMAND --help\" explains a command\n"
      "and gives examples.\n"
      "Exit codes: 0 done and proved, 1 failed, 2 wrong usage, 3 done in part or not to be proved, 4 "
      "printer\n"
      "unreachable or silent, 5 an input file is unreadable.");
  AddGlobalOptions(program, global);
  std::vector<tagCommand> commands;
  AddDiscoveryCommands(program, global, commands);
  AddSettingCommands(program, global, commands);
  AddDataCommands(program, global, commands);
  AddBackupCommands(program, global, commands);
  try {
    return Run(program, commands, std::move(arguments));
  } catch (const CCommandError& error) {
    WriteError(std::string("tvmgr: ") + error.what() + "\n");
    return error.ExitCode();
  } catch (const std::bad_alloc&) {
    WriteError("tvmgr: memory ran out\n");
  } catch (const std::exception& error) {
    WriteError(std::string("tvmgr: unexpected: ") + error.what() + "\n");
  }
  return kExitFailed;
}

}  // namespace tvmgr
