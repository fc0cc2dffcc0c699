// The arguments of the commands about the tool itself: doctor, completions.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "commands/commands.h"
#include "completion/completion_model.h"
#include "names/setting_names.h"
#include "options/command_parsers.h"
#include "output/json_output.h"
#include "output/record_output.h"

namespace tvmgr {
namespace {

/** "{usb,network,all}" of what the parser says of an option's values. */
std::vector<std::string> Choices(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t open = type.find('{');
  const std::size_t close = type.find('}', std::min(open, type.size()));
  std::vector<std::string> choices;
  if (close == std::string::npos) {
    return choices;
  }
  for (std::size_t at = open + 1; at <= close;) {
    const std::size_t end = std::min(type.find(',', at), close);
    choices.push_back(type.substr(at, end - at));
    at = end + 1;
  }
  return choices;
}

std::vector<std::string> KeysOfSettings(const std::string& end) {
  std::vector<std::string> keys;
  for (const tagSettingName& setting : AllSettings()) {
    keys.push_back(std::string(setting.key) + end);
    std::replace(keys.back().begin(), keys.back().end(), ',', '_');  // shells split at commas
  }
  return keys;
}

std::vector<std::string> Arguments(const std::string& command, const CLI::Option& option) {
  if (command == "get" || command == "set") {
    return KeysOfSettings(command == "set" ? "=" : "");
  }
  return command == "op" ? OperationNames() : Choices(option);
}

void Append(const CLI::App& parser, const std::string& name, CompletionModel& model) {
  tagCompletionCommand command{name, {}, {}, {}};
  for (const CLI::Option* const option : parser.get_options()) {
    if (option->get_positional()) {
      const std::vector<std::string> arguments = Arguments(name, *option);
      command.arguments.insert(command.arguments.end(), arguments.begin(), arguments.end());
    }
    tagCompletionOption completion{{}, option->get_items_expected_max() > 0, Choices(*option)};
    for (const std::string& letter : option->get_snames()) {
      completion.names.push_back("-" + letter);
    }
    for (const std::string& word : option->get_lnames()) {
      completion.names.push_back("--" + word);
    }
    if (!completion.names.empty()) {
      command.options.push_back(std::move(completion));
    }
  }
  const std::size_t place = model.size();
  model.push_back(std::move(command));
  for (const CLI::App* const inner : parser.get_subcommands([](const CLI::App*) { return true; })) {
    model[place].subcommands.push_back(inner->get_name());
    Append(*inner, name.empty() ? inner->get_name() : name + " " + inner->get_name(), model);
  }
}

tagCommand AddCompletions(const CParser& program, const tagGlobalOptions& global) {
  const auto shell = std::make_shared<std::string>();
  const CParser parser =
      program.AddCommand("completions", "print a script that completes commands in a shell");
  parser.Add("shell", *shell, "bash or powershell").Required().OneOf({"bash", "powershell"});
  parser.Footer(
      "The script is made of the commands and options of this very program.\n\n"
      "Examples:\n  tvmgr completions bash > ~/.local/share/bash-completion/completions/tvmgr.exe\n"
      "  tvmgr completions powershell | Out-String | Invoke-Expression");
  return {parser, [program, &global, shell] {
            CompletionModel model;
            Append(program.App(), {}, model);
            const std::string script = *shell == "bash" ? BashCompletion(model) : PowerShellCompletion(model);
            if (global.json) {
              SetJsonResult({{"shell", *shell}, {"script", script}});
            } else {
              WriteOutput(script);
            }
            return 0;
          }};
}

tagCommand AddDoctor(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagDoctorOptions>();
  const CParser parser =
      program.AddCommand("doctor", "look for what keeps this computer and a printer apart");
  parser.AddFlag(
      "--read", options->reads_settings,
      "read all settings, too: a printer that is not at 600 dots per inch saves its settings then");
  parser.Footer(
      "Looks at the tool, its DLLs, the choice of the printer, the print spooler, the network, and at what "
      "the\n"
      "printer answers, in this order. Each step has a bound, at most 22 s (--read: the one of \"get "
      "--all\").\n"
      "Without --read nothing is changed anywhere: the printer is asked for its state and its prefix "
      "characters.\n"
      "Exit codes: 0 all is well, 1 something on this computer is not, 3 something is to be looked at or "
      "could\n"
      "not be tried, 4 the printer cannot be reached or does not answer.\n\n"
      "Examples:\n  tvmgr doctor\n  tvmgr --address 192.0.2.7 doctor --json\n  tvmgr doctor --read");
  return {parser, [&global, options] { return RunDoctor(global, *options); },
          tagWatch{0, std::string("Without --read the printer is as it was. With it: ") + kLeftByReading}};
}

}  // namespace

void AddToolCommands(const CParser& program, const tagGlobalOptions& global,
                     std::vector<tagCommand>& commands) {
  commands.push_back(AddDoctor(program, global));
  commands.push_back(AddCompletions(program, global));
}

}  // namespace tvmgr
