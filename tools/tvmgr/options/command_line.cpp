#include "options/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "batch/batch_command.h"
#include "options/command_parsers.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/json_output.h"
#include "output/result_words.h"
#include "output/text_layout.h"
#include "printer/manager_session.h"
#include "printer/printer_environment.h"
#include "printer/worker.h"
#include "trace/trace_file.h"

namespace tvmgr {
namespace {

void AddGlobalOptions(CLI::App& program, tagGlobalOptions& global, tagBatchOptions& batch) {
  program.add_option("--device", global.device, "the printer by its USB device path")
      ->envname(kDeviceVariable);
  program.add_option("--port", global.port, "the printer by its port of the print spooler")
      ->envname(kPortVariable);
  program.add_option("--address", global.address, "the printer by host name or address")
      ->envname(kAddressVariable);
  program.add_flag("--json", global.json, "results as JSON");
  program.add_flag("--quiet", global.quiet, "no progress and no remarks, only results and errors");
  program.add_flag("--verbose", global.verbose, "show every call of the module with its result and duration");
  program.add_flag("--no-color", global.no_color,
                   "no colours on a terminal; NO_COLOR=1 in the environment does it, too");
  CLI::Option* const trace = program.add_option(
      "--trace", global.trace, "write every call of the module to this file; appended to a trace");
  program.add_flag("--trace-contents", global.trace_contents, "contents of files in the trace, too")
      ->needs(trace);
  program.add_flag("--no-check", global.no_check, "do not ask for the printer's status before long work");
  COption(program.add_option("--timeout", global.timeout_s,
                             "seconds until the printer is asked whether it is still there; 0: never"))
      .Range(0.0, 1e6);
  CLI::Option* const printers =
      program
          .add_option("--printers", batch.printers,
                      "several printers: A,B,C, a file with one a line, or found (searched now)")
          ->check(CLI::Validator(
              [](std::string& text) { return std::string(text.empty() ? "names no printer" : ""); }, ""));
  program.add_option("--jobs", batch.jobs, "so many of them at a time")
      ->check(CLI::Range(1U, 64U))
      ->capture_default_str()
      ->needs(printers);
  COption(
      program
          .add_option("--limit", batch.limit_s, "seconds until the work on one of them is ended; 0: never")
          ->needs(printers))
      .Range(0.0, 1e6)
      .ShowsDefault();
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

// The variables count only when no option names a printer, and may come from somebody else.
void RefuseTwoPrinters(const tagGlobalOptions& global) {
  if (global.device.empty() || global.address.empty()) {
    return;
  }
  const char* const variable = std::getenv(kAddressVariable);
  const bool is_environment = variable != nullptr && *variable != 0;
  throw CUsageError(is_environment ? "the environment variables " + std::string(kDeviceVariable) + "=" +
                                         global.device + " and " + kAddressVariable + "=" + global.address +
                                         " name two printers: unset one, or give --device or --address"
                                   : "--device " + global.device + " and --address " + global.address +
                                         " name two printers: give one of them");
}

/** "backup check": the command that was recognised, with those around it. */
std::string CommandName(const CLI::App& program) {
  std::string name;
  for (std::vector<CLI::App*> inner = program.get_subcommands(); !inner.empty();
       inner = inner.front()->get_subcommands()) {
    name += (name.empty() ? "" : " ") + inner.front()->get_name();
  }
  return name;
}

/** What the user gave, for the processes that each work with one printer. */
void AddGiven(const CLI::App& parser, tagGivenCommand& command) {
  // What belongs to the whole run, or is put into each of them in another form.
  constexpr std::string_view kOwn[] = {"--printers", "--jobs", "--limit", "--port", "--device",
                                       "--address",  "--json", "--quiet", "--yes",  "--no-color"};
  for (const CLI::Option* const option : parser.get_options()) {
    const std::string name = option->nonpositional() ? option->get_name() : std::string();
    command.takes_yes = command.takes_yes || name == "--yes";
    if (option->count() > 0 && std::find(std::begin(kOwn), std::end(kOwn), name) == std::end(kOwn)) {
      // A flag's words may be "no", "0" or several: what they come to is what counts.
      const bool is_flag = option->get_items_expected_max() == 0;
      command.given.push_back({name, is_flag ? std::vector<std::string>{option->as<bool>() ? "true" : "false"}
                                             : option->results()});
    }
  }
}

int RunForEach(const CLI::App& program, const CLI::App& parser, const tagGlobalOptions& global,
               tagBatchOptions batch) {
  if (!global.port.empty() || !global.device.empty() || !global.address.empty()) {
    throw CUsageError("--printers names the printers: --port, --device and --address name one");
  }
  tagGivenCommand command;
  command.name = CommandName(program);
  AddGiven(program, command);
  AddGiven(parser, command);
  const CLI::Option* const yes = parser.get_option_no_throw("--yes");
  batch.yes = yes != nullptr && yes->as<bool>();
  const int exit_code = RunOnPrinters(global, batch, std::move(command));
  if (global.json) {
    WriteJsonDocument(exit_code, nullptr);
  }
  return exit_code;
}

[[noreturn]] void RefuseUsage(const CLI::App& program, const CLI::ParseError& error) {
  const std::string name = CommandName(program);
  const std::vector<std::string> unknown = program.remaining(true);
  if (!name.empty()) {
    throw CUsageError(std::string(error.what()) + "; \"tvmgr " + name + " --help\" explains the command");
  }
  if (unknown.empty()) {
    throw CUsageError("name a command; \"tvmgr --help\" lists them");
  }
  throw CUsageError(std::string("there is no ") + (unknown.front().front() == '-' ? "option" : "command") +
                    " \"" + unknown.front() + "\"; \"tvmgr --help\" lists them");
}

// Whose failure it is: the printer that was asked, unless it is about the command line or a file of the host.
std::string Subject(const CCommandError& error) {
  const bool is_elsewhere = error.ExitCode() == kExitUsage || error.ExitCode() == kExitInputFile ||
                            dynamic_cast<const COutputFileError*>(&error) != nullptr;
  return is_elsewhere || AskedPrinter().empty() ? std::string() : AskedPrinter() + ": ";
}

int RunTraced(const tagCommand& command, const tagGlobalOptions& global, const std::string& name) {
  OpenTrace(global, name);
  try {
    const int exit_code = command.run();
    CloseTrace(exit_code);
    return exit_code;
  } catch (const CCommandError& error) {
    CloseTrace(error.ExitCode());
    throw;
  } catch (...) {
    CloseTrace(kExitFailed);
    throw;
  }
}

int RunCommand(const tagCommand& command, const tagGlobalOptions& global, const std::string& name,
               ERole role) {
  const auto run = [&] {
    const int exit_code = RunTraced(command, global, name);
    if (global.json) {
      WriteJsonDocument(exit_code, nullptr);
    }
    return exit_code;
  };
  if (role == ERole::kProbe) {
    return RunProbe(global);
  }
  if (!command.watch || role == ERole::kWorker) {
    return run();
  }
  try {
    const std::optional<int> exit_code = RunInWorker(global, *command.watch);
    return exit_code ? *exit_code : run();
  } catch (const CFailure& error) {
    AppendToTrace(global, error.what());
    throw;
  }
}

int Run(CLI::App& program, std::vector<tagCommand>& commands, std::vector<std::string> arguments,
        const tagGlobalOptions& global, const tagBatchOptions& batch, ERole role) {
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
    // A request for help or the version ends the parsing, too.
    if (error.get_exit_code() == 0) {
      return program.exit(error, std::cout, std::cerr);
    }
    NoteJsonCommand(CommandName(program));
    RefuseUsage(program, error);
  }
  NoteJsonCommand(CommandName(program));
  RefuseTwoPrinters(global);
  if (global.no_color) {
    ForbidColour();
  }
  for (const tagCommand& command : commands) {
    if (command.parser.App().parsed() && !batch.printers.empty()) {
      return RunForEach(program, command.parser.App(), global, batch);
    }
    if (command.parser.App().parsed()) {
      return RunCommand(command, global, CommandName(program), role);
    }
  }
  return kExitUsage;
}

// What went wrong and what to do: many texts have it in them already.
std::string WithAdvice(const CCommandError& error) {
  const std::string text = error.what();
  const std::string advice = AdviceFor(error);
  const bool is_told = advice.empty() || text.find(advice) != std::string::npos ||
                       (error.ExitCode() == kExitUsage && text.find("--help") != std::string::npos);
  return is_told ? text : text + (text.ends_with('\n') ? "  -> " : ": ") + advice;
}

int Report(const CCommandError& error, bool json) {
  WriteError("tvmgr: " + Subject(error) + WithAdvice(error) + "\n");
  if (json) {
    try {
      WriteJsonDocument(error.ExitCode(), &error);
    } catch (const CFailure& failure) {
      // It may be what ended the command.
      if (std::string_view(failure.what()) != error.what()) {
        WriteError(std::string("tvmgr: ") + failure.what() + "\n");
      }
    }
  }
  return error.ExitCode();
}

}  // namespace

int RunCommandLine(std::vector<std::string> arguments) {
  const ERole role = TakeRole(arguments);
  PreparePrinterEnvironment(arguments);
  tagGlobalOptions global;
  tagBatchOptions batch;
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
      "chooses; commands that change something on a printer want one chosen. What is overwritten, deleted "
      "or\n"
      "reset is asked for before (--yes: agreed). Options may stand before or after the command; \"tvmgr "
      "COMMAND --help\" explains a command\n"
      "and gives examples.\n"
      "Exit codes: 0 done and proved, 1 failed, 2 wrong usage, 3 done in part or not to be proved, 4 "
      "printer\n"
      "unreachable or silent, 5 an input file is unreadable, 6 not done on all of --printers.");
  AddGlobalOptions(program, global, batch);
  std::vector<tagCommand> commands;
  const CParser parser(program);
  AddDiscoveryCommands(parser, global, commands);
  AddSettingCommands(parser, global, commands);
  AddDataCommands(parser, global, commands);
  AddBackupCommands(parser, global, commands);
  AddProfileCommands(parser, global, commands);
  AddToolCommands(parser, global, commands);
  // Also errors of the parsing itself are told as asked for.
  const bool json = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
  try {
    return Run(program, commands, std::move(arguments), global, batch, role);
  } catch (const CCommandError& error) {
    return Report(error, json);
  } catch (const std::bad_alloc&) {
    return Report(CFailure("memory ran out"), json);
  } catch (const std::exception& error) {
    return Report(CFailure(std::string("unexpected: ") + error.what()), json);
  }
}

}  // namespace tvmgr
