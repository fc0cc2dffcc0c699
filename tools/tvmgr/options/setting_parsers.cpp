// The arguments of the commands for ports, settings, prefix characters and status.
#include <memory>

#include "commands/commands.h"
#include "options/command_parsers.h"

namespace tvmgr {
namespace {

constexpr double kMaxSeconds = 1e6;

tagCommand AddPorts(const CParser& program, const tagGlobalOptions& global) {
  const CParser parser = program.AddCommand("ports", "list the print spooler's ports with their printers");
  parser.Footer("Example:\n  tvmgr ports");
  AddTableOptions(parser, {"PORT", "MONITOR", "DESCRIPTION", "PRINTERS"});
  return {parser, [&global] { return RunPorts(global); }};
}

tagCommand AddGet(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagGetOptions>();
  const CParser parser = program.AddCommand("get", "read settings");
  const COption names = parser.Add("setting", options->settings,
                                   "numbers, keys, groups or patterns: 3, CLR,Z, clr_z, CLM, \"CLM,*\"");
  parser.AddFlag("--all", options->all, "every setting").Excludes(names);
  AddLabelsOption(parser, options->labels);
  parser.Footer(
      "Control characters in values are shown as \\xNN. In JSON a value with more than plain ASCII also\n"
      "has its bytes under \"hex\". In shells that split at commas write CLR_Z for CLR,Z. CLM is the group "
      "of\n"
      "all settings whose keys begin so; in patterns * stands for any characters, ? for one.\n"
      "A D of CMP,U may be the resolution guard's (JSON: \"guard\": true). Exit code 3 when the printer "
      "gives\n"
      "no value for some of the settings, 1 when for none.\n\n"
      "Examples:\n  tvmgr get CLR_Z CMP_U\n  tvmgr get CLM \"CL?_P\"\n  tvmgr --address 192.0.2.7 get --all "
      "--json");
  AddTableOptions(parser, {"ID", "KEY", "NAME", "VALUE"});
  return {parser, [&global, options] { return RunGet(global, *options); }, tagWatch{30, kLeftByReading}};
}

tagCommand AddSet(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagSetOptions>();
  const CParser parser = program.AddCommand("set", "write settings, save them and verify them");
  parser.Add("assignment", options->assignments, "KEY=VALUE").Required();
  parser.AddFlag("--keep-resolution", options->keep_resolution,
                 "the guard leaves settings 3, 4 and 5 alone while it writes");
  parser.AddFlag("--dry-run", options->dry_run, kDryRunHelp);
  AddLabelsOption(parser, options->labels);
  parser.AddFlag("--force", options->force, "write values that the labels do not allow");
  parser.Footer(
      "The verdict for each setting is written, differs, not readable (46 and 74, and settings that the\n"
      "printer does not answer for) or cannot be proved here (84). On a printer whose resolutions are not "
      "600\n"
      "or whose mode is not D the guard puts settings 3, 4, 5 and 84 back to what they were, new values for\n"
      "them included. Exit codes: 0 all written, 1 not, 3 not to be proved.\n" +
      std::string(kDryRunFooter) +
      "\n\nExamples:\n  tvmgr set CLM_P=12 CLS_L=3\n  tvmgr set --keep-resolution CLR_Z=300");
  AddTableOptions(parser, {"ID", "KEY", "NAME", "ASKED", "GOT", "VERDICT", "REASON"});
  return {parser, [&global, options] { return RunSet(global, *options); }, tagWatch{60, kLeftByWriting}};
}

tagCommand AddPrefix(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagPrefixOptions>();
  const CParser parser = program.AddCommand("prefix", "show or change the prefix characters");
  parser.Add("--set", options->characters, "control, format and delimiter character, or 0xNN for each")
      .Words(3)
      .TypeName("C F D");
  parser.AddFlag("--default", options->to_default, "put ~ ^ and , back");
  parser.AddFlag("--yes", options->yes, "change them without asking");
  parser.Footer(
      "Examples:\n  tvmgr prefix\n  tvmgr prefix --set \"!\" \"@\" \";\"\n  tvmgr prefix --default --yes");
  return {parser, [&global, options] { return RunPrefix(global, *options); }, tagWatch{30, kLeftByWriting}};
}

tagCommand AddStatus(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagStatusOptions>();
  const CParser parser = program.AddCommand("status", "ask for the printer's status");
  parser.AddFlag("--watch", options->watch,
                 "go on asking; a line with the time for each change; Ctrl-C ends it");
  parser.AddFlag("--every-poll", options->every_poll, "with --watch: a line for each poll");
  parser.Add("--interval", options->interval_s, "seconds from poll to poll")
      .Range(0.0, kMaxSeconds)
      .ShowsDefault();
  parser.Add("--count", options->count, "with --watch: end after so many polls").Range(1U, UINT32_MAX);
  parser.Add("--for", options->duration_s, "with --watch: end after so many seconds").Range(0.0, kMaxSeconds);
  parser.Footer(
      "Exit code 4 when the printer did not answer (under --watch: not once).\n\n"
      "Examples:\n  tvmgr status\n  tvmgr status --watch --interval 5\n  tvmgr status --watch --every-poll "
      "--count 10");
  // A watch is there for printers that come and go.
  return {parser, [&global, options] { return RunStatus(global, *options); },
          tagWatch{0, "The printer was asked for its state, nothing else: it is as it was"}};
}

tagCommand AddCodes(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagCodesOptions>();
  const CParser parser = program.AddCommand("codes", "explain the result codes");
  parser.Add("code", options->code, "one code, for example -82; without it: all of them");
  parser.Footer("Examples:\n  tvmgr codes\n  tvmgr codes -82");
  return {parser, [&global, options] { return RunCodes(global, *options); }};
}

}  // namespace

void AddSettingCommands(const CParser& program, const tagGlobalOptions& global,
                        std::vector<tagCommand>& commands) {
  commands.push_back(AddPorts(program, global));
  commands.push_back(AddStatus(program, global));
  commands.push_back(AddGet(program, global));
  commands.push_back(AddSet(program, global));
  commands.push_back(AddPrefix(program, global));
  commands.push_back(AddCodes(program, global));
}

}  // namespace tvmgr
