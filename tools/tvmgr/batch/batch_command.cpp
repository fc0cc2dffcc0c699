#include "batch/batch_command.h"

#include <windows.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>

#include "batch/batch_output.h"
#include "batch/batch_printers.h"
#include "batch/child_pool.h"
#include "batch/file_pattern.h"
#include "batch/live_table.h"
#include "files/file_target.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/json_output.h"
#include "output/text_encoding.h"
#include "output/text_layout.h"

namespace tvmgr {
namespace {

/** A command that works on several printers. */
struct tagBatchCommand {
  std::string_view name;
  bool asks = false;            /**< the one question for all printers is asked */
  std::string_view output = {}; /**< option with a file to write, whose name is a pattern */
  std::string_view single = {}; /**< option that is for one printer only */
};

constexpr tagBatchCommand kCommands[] = {
    {"status", false, {}, "--watch"},
    {"info"},
    {"get"},
    {"set"},
    {"apply", true},
    {"export", false, "--output"},
    {"backup", false, "--output"},
    {"restore", true},
    {"put", true},
    {"rm", true},
    {"op", true, {}, "--list"},
};

const tagBatchCommand& FindCommand(const std::string& name) {
  const auto* const found = std::find_if(std::begin(kCommands), std::end(kCommands),
                                         [&](const tagBatchCommand& one) { return one.name == name; });
  if (found == std::end(kCommands)) {
    std::string names;
    for (const tagBatchCommand& one : kCommands) {
      names += (names.empty() ? "" : ", ") + std::string(one.name);
    }
    throw CUsageError("\"tvmgr " + name + "\" takes no --printers; it is for " + names);
  }
  return *found;
}

tagRunTime Now() {
  std::string stamp = TimeStamp();  // "2031-05-04 13:14:15.167"
  std::replace(stamp.begin(), stamp.end(), ':', '-');
  return {stamp.substr(0, 10), stamp.substr(11, 8)};
}

std::string CountOf(const std::vector<tagListedPrinter>& printers) {
  return printers.size() == 1 ? "1 printer" : std::to_string(printers.size()) + " printers";
}

/** "3 printers: A, B, C"; of many the first ones. */
std::string Describe(const std::vector<tagListedPrinter>& printers) {
  constexpr std::size_t kNamed = 12;
  std::string text = CountOf(printers) + ":";
  for (std::size_t i = 0; i < std::min(printers.size(), kNamed); ++i) {
    text += (i == 0 ? " " : ", ") + MakeVisible(LabelOf(printers[i]));
  }
  return printers.size() > kNamed ? text + " and " + std::to_string(printers.size() - kNamed) + " more"
                                  : text;
}

/** The command as the user gave it, for the question. */
std::string Describe(const tagGivenCommand& command) {
  std::string text = command.name;
  for (const tagGivenOption& option : command.given) {
    for (const std::string& value : option.values) {
      const std::string name = option.name.empty() ? "" : option.name + (value == "true" ? "" : "=");
      text += " " + MakeVisible(name + (value == "true" && !option.name.empty() ? "" : value));
    }
  }
  return text;
}

bool IsSet(const tagGivenCommand& command, std::string_view flag) {
  const tagGivenOption* const option = command.Find(flag);
  return option != nullptr && option->values != std::vector<std::string>{"false"};
}

// Windows ignores the case of all letters, where names of printers have them: "Büro" and "BÜRO" are one file.
void RequireOwnFiles(const std::vector<std::string>& paths, const std::vector<tagListedPrinter>& printers) {
  for (std::size_t i = 0; i < paths.size(); ++i) {
    for (std::size_t k = 0; k < i; ++k) {
      if (CompareStringOrdinal(ToWide(paths[i]).c_str(), -1, ToWide(paths[k]).c_str(), -1, TRUE) ==
          CSTR_EQUAL) {
        throw CUsageError("\"" + paths[i] + "\" of " + LabelOf(printers[i]) + " and \"" + paths[k] +
                          "\" of " + LabelOf(printers[k]) +
                          " are one file: put {printer} or {number} into the name");
      }
    }
  }
}

/** The files of all printers, each of which can be written; asks before any of them is overwritten. */
std::vector<std::string> OutputFiles(const tagBatchCommand& known, const tagGivenCommand& command,
                                     const std::vector<tagListedPrinter>& printers, bool agreed) {
  const tagGivenOption* const option = command.Find(known.output);
  if (option == nullptr || option->values.empty()) {
    throw CUsageError("name the files to write, as in " + command.name + " -o \"" + command.name +
                      "-{printer}-{date}\"");
  }
  std::vector<std::string> paths =
      ExpandPattern(option->values.front(), std::string(known.output), printers, Now());
  RequireOwnFiles(paths, printers);
  std::string there;
  std::size_t count = 0;
  for (const std::string& path : paths) {
    const CFileTarget can_be_written(path, "the " + command.name);
    std::error_code error;
    if (std::filesystem::exists(ToWide(path), error)) {
      there += (count == 0 ? "" : ", ") + path;
      ++count;
    }
  }
  if (count > 0) {
    Confirm("overwrite " + std::to_string(count) + " files on this computer: " + there, agreed);
  }
  return paths;
}

std::string CommandLine(const std::vector<std::string>& arguments) {
  std::string line;
  for (const std::string& argument : arguments) {
    line += (line.empty() ? "" : " ") + QuoteArgument(argument);
  }
  return line;
}

/** By the option that names it: a file of its own for each printer. */
using tagOwnFiles = std::map<std::string, std::vector<std::string>, std::less<>>;

std::vector<std::string> CommandLines(tagGivenCommand command, const std::vector<tagListedPrinter>& printers,
                                      const tagOwnFiles& files) {
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < printers.size(); ++i) {
    for (tagGivenOption& option : command.given) {
      if (const auto own = files.find(option.name); own != files.end()) {
        option.values = {own->second[i]};
      }
    }
    lines.push_back(CommandLine(ChildArguments(command, printers[i])));
  }
  return lines;
}

/** Runs what can be started, and judges; the others have their verdict already. */
class CBatchRun {
 public:
  CBatchRun(const tagGlobalOptions& global, const std::string& command,
            const std::vector<tagListedPrinter>& printers, const std::vector<std::string>& problems)
      : global_(global), command_(command), verdicts_(printers.size()) {
    for (std::size_t i = 0; i < printers.size(); ++i) {
      if (problems[i].empty()) {
        places_.push_back(i);
        labels_.push_back(LabelOf(printers[i]));
      } else {
        verdicts_[i] = NotStarted("not started", problems[i]);
      }
    }
  }

  std::vector<tagPrinterVerdict> Run(const std::vector<std::string>& all_lines, const tagPoolOptions& pool) {
    std::vector<std::string> lines;
    for (const std::size_t place : places_) {
      lines.push_back(all_lines[place]);
    }
    CLiveTable table(labels_, !global_.quiet);
    tagPoolListener listener;
    listener.started = [&](std::size_t i) { table.SetRunning(i, 0, {}); };
    listener.runs = [&](std::size_t i, std::uint64_t ms, const std::string& step) {
      table.SetRunning(i, ms, step);
    };
    listener.tick = [&] { table.Draw(); };
    listener.interrupted = [&] {
      table.Say(
          "Ctrl-C: no more printers are begun; waiting for those at work to end in order; again ends them at "
          "once");
    };
    listener.ended = [&](std::size_t i, const tagChildRun& run) {
      tagPrinterVerdict& verdict = verdicts_[places_[i]] = Judge(run, command_);
      table.SetEnded(i, verdict.took_ms, verdict.word);
      for (const std::string& remark :
           global_.quiet || global_.verbose ? std::vector<std::string>() : verdict.remarks) {
        table.Say("remark: " + MakeVisible(labels_[i]) + ": " + remark);
      }
      if (global_.verbose) {
        table.Say(MakeVisible(labels_[i]) + ":\n" + run.err);
      }
    };
    RunChildren(lines, pool, listener);
    return std::move(verdicts_);
  }

 private:
  const tagGlobalOptions& global_;
  const std::string& command_;
  std::vector<tagPrinterVerdict> verdicts_;
  std::vector<std::size_t> places_; /**< in the list, of those that are started */
  std::vector<std::string> labels_;
};

}  // namespace

int RunOnPrinters(const tagGlobalOptions& global, const tagBatchOptions& options, tagGivenCommand command) {
  NoteJsonCommand("printers");
  const tagBatchCommand& known = FindCommand(command.name);
  if (!known.single.empty() && IsSet(command, known.single)) {
    throw CUsageError(std::string(known.single) + " is for one printer at a time");
  }
  const tagBatchPrinters list = ListPrinters(global, options.printers);
  tagOwnFiles files;
  if (const tagGivenOption* const trace = command.Find("--trace")) {
    files["--trace"] = ExpandPattern(trace->values.front(), "--trace", list.printers, Now());
  }
  if (!known.output.empty()) {
    files[std::string(known.output)] = OutputFiles(known, command, list.printers, options.yes);
  }
  if (known.asks && !IsSet(command, "--dry-run")) {
    Confirm("do \"" + Describe(command) + "\" on " + Describe(list.printers), options.yes);
  }
  CBatchRun run(global, command.name, list.printers, list.problems);
  const std::vector<tagPrinterVerdict> verdicts =
      run.Run(CommandLines(command, list.printers, files),
              {std::min<std::size_t>(options.jobs, list.printers.size()),
               static_cast<std::uint64_t>(std::ceil(options.limit_s * 1000))});
  PrintVerdicts(global, command.name, list.printers, verdicts);
  RequireAllDone(list.printers, verdicts, list.search_problem);
  return kExitDone;
}

}  // namespace tvmgr
