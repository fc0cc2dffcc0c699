// The arguments of the commands for profiles, and the option for labels.
#include <memory>

#include "commands/commands.h"
#include "options/command_parsers.h"

namespace tvmgr {
namespace {

constexpr char kOnlyHelp[] = "only these settings: numbers, keys, groups or patterns";
constexpr char kAllHelp[] = "also settings that belong to one device";

tagCommand AddExport(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagExportOptions>();
  const CParser parser = program.AddCommand("export", "write the printer's settings to a profile");
  parser.Add("-o,--output,file", options->file, "the profile to write").Required();
  parser.AddFlag("--all", options->all, kAllHelp);
  parser.Add("--only", options->only, kOnlyHelp);
  parser.AddFlag("--yes", options->yes, "overwrite an existing file without asking");
  parser.Footer(
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

tagCommand AddApply(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagApplyOptions>();
  const CParser parser = program.AddCommand("apply", "bring the printer's settings to those of a profile");
  parser.Add("file", options->file, "the profile").Required();
  parser.AddFlag("--dry-run", options->dry_run, kDryRunHelp);
  parser.Add("--only", options->only, kOnlyHelp);
  parser.AddFlag("--all", options->all, kAllHelp);
  parser.AddFlag("--yes", options->yes, "do not ask");
  AddLabelsOption(parser, options->labels);
  parser.AddFlag("--force", options->force,
                 "write to a printer of another model, and values that the labels do not allow");
  parser.Footer(
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

tagCommand AddDiff(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagDiffOptions>();
  const CParser parser = program.AddCommand("diff", "compare the settings of profiles, backups and printers");
  const char* const help =
      "a profile, a backup, or a printer: printer (the chosen one), port:NAME, address:HOST, device:PATH";
  parser.Add("a", options->first, help).Required();
  parser.Add("b", options->second, "likewise").Required();
  parser.AddFlag("--all", options->all, kAllHelp);
  AddLabelsOption(parser, options->labels);
  parser.Footer(
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

void AddLabelsOption(const CParser& parser, std::string& labels) {
  parser.Add("--labels", labels, "a file with names, units and allowed values of settings");
}

void AddProfileCommands(const CParser& program, const tagGlobalOptions& global,
                        std::vector<tagCommand>& commands) {
  commands.push_back(AddExport(program, global));
  commands.push_back(AddApply(program, global));
  commands.push_back(AddDiff(program, global));
}

}  // namespace tvmgr
