#include <algorithm>
#include <charconv>

#include "commands/commands.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/json_output.h"
#include "output/record_output.h"
#include "output/text_encoding.h"
#include "output/text_layout.h"
#include "printer/choice_file.h"
#include "printer/printer_choice.h"
#include "printer/printer_kind.h"
#include "printer/worker.h"

namespace tvmgr {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

tagRememberedPrinter ByNumber(const tagChoiceFile& choice, const std::string& text) {
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || number < 1 || number > choice.found.size()) {
    throw CUsageError("there is no printer " + text + ": the last search found " +
                      std::to_string(choice.found.size()) + " (tvmgr search all)");
  }
  return choice.found[number - 1];
}

tagRememberedPrinter Resolve(const tagChoiceFile& choice, const tagUseOptions& options) {
  const std::string& text = options.printer;
  if (!options.as.empty()) {
    return {options.as, text, ""};
  }
  if (std::all_of(text.begin(), text.end(), IsDigit)) {
    return ByNumber(choice, text);
  }
  return {KindByLook(text), text, ""};
}

// Whether the printer that was just remembered answers; none: not known. It may be off, and is remembered all the same.
std::optional<bool> Ask(const tagGlobalOptions& global, const tagRememberedPrinter& chosen) {
  const std::optional<int> asked = AskForStatus();
  const std::string printer = MakeVisible(chosen.value);
  if (asked != kExitDone && !global.quiet) {
    WriteError(asked == kExitUnreachable
                   ? "remark: " + printer +
                         " is remembered, but does not answer now (\"tvmgr status\" asks it again)\n"
                   : "remark: " + printer +
                         " is remembered, but cannot be asked (\"tvmgr status\" says why)\n");
  }
  const bool is_known = asked == kExitDone || asked == kExitUnreachable;
  return is_known ? std::optional(asked == kExitDone) : std::nullopt;
}

int Show(const tagGlobalOptions& global, const std::optional<tagRememberedPrinter>& chosen,
         std::optional<bool> answers) {
  if (global.json) {
    SetJsonResult(
        {{"printer", chosen ? PrinterJson(chosen->kind, chosen->value, chosen->name) : PrinterJson()},
         {"answers", answers ? Json(*answers) : Json()}});
  } else if (chosen) {
    // The name is what the printer said in a search.
    WriteOutput(chosen->kind + " " + MakeVisible(chosen->value) +
                (chosen->name.empty() ? "" : "  (" + MakeVisible(chosen->name) + ")") + "\n");
  } else {
    WriteOutput("no printer is remembered\n");
  }
  return kExitDone;
}

}  // namespace

int RunUse(const tagGlobalOptions& global, const tagUseOptions& options) {
  if (options.clear && !options.printer.empty()) {
    throw CUsageError("name a printer or give --clear, not both");
  }
  if (options.printer.empty() && !options.as.empty()) {
    throw CUsageError("--as belongs to a printer that is named");
  }
  const bool shows = options.printer.empty() && !options.clear;
  tagChoiceFile choice = shows ? LoadChoiceFile() : LoadChoiceFileOrNone();
  if (!shows) {
    choice.chosen = options.clear ? std::nullopt : std::optional(Resolve(choice, options));
    SaveChoiceFile(choice);
  }
  const bool overruled = !global.port.empty() || !global.device.empty() || !global.address.empty();
  if (overruled && !global.quiet) {
    WriteError("remark: in force is " + Describe(ChoiceInForce(global)) +
               ": options and environment variables go before what is remembered\n");
  }
  // With another one in force that one would be asked.
  const bool asks = !shows && choice.chosen && !overruled && !global.no_check;
  return Show(global, choice.chosen, asks ? Ask(global, *choice.chosen) : std::nullopt);
}

}  // namespace tvmgr
