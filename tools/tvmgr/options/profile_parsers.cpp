// The arguments of the commands for profiles, and the option for labels.
#include <memory>

#include "commands/commands.h"
#include "options/command_parsers.h"

namespace tvmgr {
namespace {

constexpr char kOnlyHelp[] = "only these settings: numbers, keys, groups or patterns";
constexpr char kAllHelp[] = "also settings that belong to one device";

tagCommand AddExport(CLI::App& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagExportOptions>();
  CLI::App* const parser = program.add_subcommand("export", "write the printer's settings to a profile");
  parser->add_option("-o,--output,file", options->file, "the profile to write")->required();
  parser->add_flag("--all", options->all, kAllHelp);
  parser->add_option("--only", options->only, kOnlyHelp);
  parser->add_flag("--yes", options->yes, "overwrite an existing file without asking");
  parser->footer(
      "A profile is a JSON file for people, with comments: which printer, when, key and value. What belongs "
      "to\n"
      "one device is left out: 1, 2 (model, version), 58-64, 68-74 (counters, what the printer measures) "
      "and\n"
      "79-83 (names, addresses). 37, 46, 65-67 and 84 are in no profile. It grows in FILE.partial; when a\n"
      "setting was not answered, FILE stays as it was, and FILE.partial holds what there is.\n"
      "Exit codes: 0 complete, 1 not written, 3 something is missing, 4 the printer is silent.\n\n"
      "Examples:\n  tvmgr export shop.json\n  tvmgr export margins.json --only CLM CLW --yes");
  return {parser, [&global, options] { return RunExport(global, *options); }, tagWatch{30, kLeftByReading}};
}

tagCommand AddApply(CLI::App& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagApplyOptions>();
  CLI::App* const parser =
      program.add_subcommand("apply", "bring the printer's settings to those of a profile");
  parser->add_option("file", options->file, "the profile")->required();
  parser->add_flag("--dry-run", options->dry_run, kDryRunHelp);
  parser->add_option("--only", options->only, kOnlyHelp);
  parser->add_flag("--all", options->all, kAllHelp);
  parser->add_flag("--yes", options->yes, "do not ask");
  AddLabelsOption(parser, options->labels);
  parser->add_flag("--force", options->force,
                   "write to a printer of another model, and values that the labels do not allow");
  parser->footer(
      "The printer is read, what differs is shown and asked for, written, saved and read back; what the "
      "printer\n"
      "has already is not written. Resolutions (3, 4, 5) come last. One verdict for each setting: written,\n"
      "unchanged, differs, not readable; sent, not proved and not sent when the work ended early.\n"
      "A profile with anything that is not understood is refused, with line and reason, before the printer "
      "is\n"
      "asked. " +
      std::string(kDryRunFooter) +
      "\nExit codes: 0 all as wanted, 1 not, or refused, 3 not to be proved, 4 printer silent, 5 no "
      "profile.\n\n"
      "Examples:\n  tvmgr apply shop.json --dry-run\n  tvmgr --address 192.0.2.7 apply shop.json --yes "
      "--json\n"
      "  tvmgr apply shop.json --only CLM CLW_T");
  AddTableOptions(parser, {"KEY", "NAME", "NOW", "WANTED", "GOT", "VERDICT", "REASON"});
  return {parser, [&global, options] { return RunApply(global, *options); }, tagWatch{60, kLeftByWriting}};
}

tagCommand AddDiff(CLI::App& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagDiffOptions>();
  CLI::App* const parser =
      program.add_subcommand("diff", "compare the settings of profiles, backups and printers");
  const char* const help =
      "a profile, a backup, or a printer: printer (the chosen one), port:NAME, address:HOST, device:PATH";
  parser->add_option("a", options->first, help)->required();
  parser->add_option("b", options->second, "likewise")->required();
  parser->add_flag("--all", options->all, kAllHelp);
  AddLabelsOption(parser, options->labels);
  parser->footer(
      "What a profile names is compared; without a profile what the backups hold, of two printers what can "
      "be\n"
      "read but what belongs to one device. A file named printer is written as ./printer. Stored files are\n"
      "compared by \"tvmgr backup diff\". On a printer whose resolutions are not 600 or whose mode is not D "
      "even\n"
      "reading makes it save its settings.\n"
      "Exit codes: 0 equal, 1 different, 3 not all could be compared, 4 printer silent, 5 no profile or "
      "backup.\n\n"
      "Examples:\n  tvmgr diff shop.json printer\n  tvmgr diff monday.bak address:192.0.2.7\n"
      "  tvmgr diff address:192.0.2.7 address:192.0.2.8");
  AddTableOptions(parser, {"KEY", "NAME", "A", "B", "VERDICT"});
  return {parser, [&global, options] { return RunDiff(global, *options); }, tagWatch{30, kLeftByReading}};
}

}  // namespace

void AddLabelsOption(CLI::App* parser, std::string& labels) {
  parser->add_option("--labels", labels, "a file with names, units and allowed values of settings");
}

void AddProfileCommands(CLI::App& program, const tagGlobalOptions& global,
                        std::vector<tagCommand>& commands) {
  commands.push_back(AddExport(program, global));
  commands.push_back(AddApply(program, global));
  commands.push_back(AddDiff(program, global));
}

}  // namespace tvmgr
