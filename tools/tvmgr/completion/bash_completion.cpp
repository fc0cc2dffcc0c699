#include "completion/completion_model.h"

namespace tvmgr {
namespace {

constexpr char kBashHead[] =
    R"(# Completions of tvmgr for bash, made by "tvmgr completions bash" of the same version.
_tvmgr() {
  local command='' word words='' is_value='' previous=${COMP_WORDS[COMP_CWORD - 1]} current=${COMP_WORDS[COMP_CWORD]} i
  # A text that an option takes is no command; "=" is a word of its own.
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    case $word in
)";

constexpr char kFindCommand[] = R"(        [[ ${COMP_WORDS[i + 1]} != = ]] || ((++i))
        ((++i)) ;;
      -*) ;;
      *)
        case "${command:+$command }$word" in
)";

constexpr char kMiddle[] = R"( command=${command:+$command }$word ;;
        esac ;;
    esac
  done
  if [[ $current == = ]]; then
    current=''
    is_value=1
  elif [[ $previous == = ]]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
    is_value=1
  fi
  case "$command:$previous" in
)";

constexpr char kWords[] = R"(    *)
      # Behind the "=" of anything but an option stands a value that nobody can list.
      case "$is_value$command:$current" in
)";

constexpr char kBashTail[] = R"(      esac ;;
  esac
  COMPREPLY=($(compgen -W "$words" -- "$current"))
  if [[ ${#COMPREPLY[@]} == 1 && ${COMPREPLY[0]} == *= ]]; then
    compopt -o nospace 2>/dev/null
  fi
}
complete -o bashdefault -o default -F _tvmgr tvmgr tvmgr.exe
)";

std::string Joined(const std::vector<std::string>& words, const char* between) {
  std::string text;
  for (const std::string& word : words) {
    text += (text.empty() ? "" : between) + word;
  }
  return text;
}

/** In single quotation marks: nothing in it means anything to the shell. */
std::string BashWord(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    quoted += c == '\'' ? "'\\''" : std::string(1, c);
  }
  return quoted + "'";
}

}  // namespace

std::string BashCompletion(const CompletionModel& model) {
  std::vector<std::string> with_value;
  std::vector<std::string> commands;
  std::string values;
  std::string lines;
  for (const tagCompletionCommand& command : model) {
    std::vector<std::string> options;
    for (const tagCompletionOption& option : command.options) {
      options.insert(options.end(), option.names.begin(), option.names.end());
      if (!option.takes_value) {
        continue;
      }
      with_value.insert(with_value.end(), option.names.begin(), option.names.end());
      for (const std::string& name : option.names) {
        const std::string scope = command.name.empty() ? "*" : BashWord(command.name);
        values += "    " + scope + ":" + name + ") words=" + BashWord(Joined(option.choices, " ")) + " ;;\n";
      }
    }
    if (!command.name.empty()) {
      commands.push_back(BashWord(command.name));
      for (const tagCompletionOption& option : model.front().options) {
        options.insert(options.end(), option.names.begin(), option.names.end());
      }
    }
    std::vector<std::string> arguments = command.subcommands;
    arguments.insert(arguments.end(), command.arguments.begin(), command.arguments.end());
    lines += "        " + BashWord(command.name) + ":-*) words=" + BashWord(Joined(options, " ")) +
             " ;;\n        " + BashWord(command.name) + ":*) words=" + BashWord(Joined(arguments, " ")) +
             " ;;\n";
  }
  return std::string(kBashHead) + "      " + Joined(with_value, "|") + ")\n" + kFindCommand + "          " +
         Joined(commands, "|") + ")" + kMiddle + values + kWords + lines + kBashTail;
}

}  // namespace tvmgr
