#include "completion/completion_model.h"

namespace tvmgr {
namespace {

constexpr char kPowerShellHead[] =
    R"(# Completions of tvmgr for PowerShell, made by "tvmgr completions powershell" of the same version.
Register-ArgumentCompleter -Native -CommandName tvmgr, tvmgr.exe -ScriptBlock {
  param($wordToComplete, $commandAst, $cursorPosition)
)";

constexpr char kPowerShellTail[] = R"(  $command = ''
  $previous = ''
  foreach ($element in ($commandAst.CommandElements | Select-Object -Skip 1)) {
    if ($element.Extent.EndOffset -ge $cursorPosition -and $wordToComplete) { break }
    $word = $element.ToString()
    # A text that an option takes is no command.
    if ($withValue -ccontains $previous) {
      $previous = ''
      continue
    }
    $inner = "$command $word".Trim()
    if ($words.ContainsKey($inner)) { $command = $inner }
    $previous = $word
  }
  $candidates = if ($withValue -ccontains $previous) {
    @($values["${command}:$previous"]) + @($values[":$previous"])
  } elseif ($wordToComplete.StartsWith('-')) {
    @($options[$command]) + @($options[''])
  } else {
    $words[$command]
  }
  $candidates | Where-Object { $_ -and $_.StartsWith($wordToComplete, 'OrdinalIgnoreCase') } | Sort-Object -Unique |
    ForEach-Object { [System.Management.Automation.CompletionResult]::new($_) }
}
)";

std::string PowerShellWord(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    quoted += c == '\'' ? "''" : std::string(1, c);
  }
  return quoted + "'";
}

std::string List(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) {
    text += (text.empty() ? "" : ", ") + PowerShellWord(word);
  }
  return "@(" + text + ")";
}

std::string Line(const std::string& key, const std::vector<std::string>& words) {
  return "    " + PowerShellWord(key) + " = " + List(words) + "\n";
}

}  // namespace

std::string PowerShellCompletion(const CompletionModel& model) {
  std::vector<std::string> with_value;
  std::string words;
  std::string options;
  std::string values;
  for (const tagCompletionCommand& command : model) {
    std::vector<std::string> names;
    for (const tagCompletionOption& option : command.options) {
      names.insert(names.end(), option.names.begin(), option.names.end());
      if (option.takes_value) {
        with_value.insert(with_value.end(), option.names.begin(), option.names.end());
      }
      for (const std::string& name : option.names) {
        values += option.choices.empty() ? "" : Line(command.name + ":" + name, option.choices);
      }
    }
    std::vector<std::string> arguments = command.subcommands;
    arguments.insert(arguments.end(), command.arguments.begin(), command.arguments.end());
    words += Line(command.name, arguments);
    options += Line(command.name, names);
  }
  return std::string(kPowerShellHead) + "  $words = @{\n" + words + "  }\n  $options = @{\n" + options +
         "  }\n  $values = @{\n" + values + "  }\n  $withValue = " + List(with_value) + "\n" +
         kPowerShellTail;
}

}  // namespace tvmgr
