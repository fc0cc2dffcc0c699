#include "batch/child_arguments.h"

#include <algorithm>

namespace tvmgr {

const tagGivenOption* tagGivenCommand::Find(std::string_view option) const {
  const auto found =
      std::find_if(given.begin(), given.end(), [&](const tagGivenOption& one) { return one.name == option; });
  return found == given.end() ? nullptr : &*found;
}

std::vector<std::string> ChildArguments(const tagGivenCommand& command, const tagListedPrinter& printer) {
  std::vector<std::string> arguments = {"--" + printer.kind + "=" + printer.value, command.name};
  std::vector<std::string> unnamed;
  for (const tagGivenOption& option : command.given) {
    for (const std::string& value : option.values) {
      if (option.name.empty()) {
        unnamed.push_back(value);
      } else if (value.empty()) {
        arguments.insert(arguments.end(), {option.name, value});  // "--name=" has none
      } else {
        arguments.push_back(option.name + "=" + value);
      }
    }
  }
  if (command.takes_yes) {
    arguments.emplace_back("--yes");
  }
  // Ends the values of an option with any number of them, which would swallow the mark.
  arguments.emplace_back("--json");
  if (!unnamed.empty()) {
    // Whatever they look like, they are no options and no commands.
    arguments.emplace_back("--");
    arguments.insert(arguments.end(), unnamed.begin(), unnamed.end());
  }
  return arguments;
}

std::string QuoteArgument(std::string_view argument) {
  if (!argument.empty() && argument.find_first_of(" \t\n\v\"") == std::string_view::npos) {
    return std::string(argument);
  }
  std::string quoted = "\"";
  std::size_t backslashes = 0;
  for (const char c : argument) {
    if (c == '"') {
      quoted.append(backslashes + 1, '\\');
    }
    backslashes = c == '\\' ? backslashes + 1 : 0;
    quoted += c;
  }
  return quoted.append(backslashes, '\\') + "\"";
}

}  // namespace tvmgr
