// The arguments of the commands for backups.
#include <memory>

#include "backup_file/backup_contents.h"
#include "commands/commands.h"
#include "options/command_parsers.h"
#include "output/command_error.h"

namespace tvmgr {
namespace {

// "backup FILE", "backup check FILE", "backup diff A B", "backup coverage": what the inner commands do not know falls through to
// the outer one, which would take it in silence.
void RefuseOuterOptions(const tagBackupOptions& backup) {
  if (!backup.file.empty()) {
    throw CUsageError("\"" + backup.file + "\" is one argument too many");
  }
  if (!backup.sections.empty() || backup.yes) {
    throw CUsageError("--sections and --yes belong to \"tvmgr backup FILE\"");
  }
}

void AddBackup(const CParser& program, const tagGlobalOptions& global, std::vector<tagCommand>& commands) {
  const auto options = std::make_shared<tagBackupOptions>();
  const auto check = std::make_shared<tagBackupCheckOptions>();
  const auto diff = std::make_shared<tagBackupDiffOptions>();
  const CParser parser =
      program.AddCommand("backup", "write settings and stored files to a file; check and compare backups");
  parser.Add("-o,--output,file", options->file, "the file to write");
  parser.Add("--sections", options->sections,
             "settings, graphics, formats, fonts, background, or letters of SITFBCP; with commas");
  parser.AddFlag("--yes", options->yes, "overwrite an existing file without asking");
  parser.Footer(
      "Without --sections: settings and all stored files of device E:. The backup grows in FILE.partial, is\n"
      "checked and compared with what the printer said it has, and only then takes the place of FILE. When\n"
      "something is missing, FILE stays as it was, and FILE.partial holds what there is.\n"
      "A backup holds 55 of the printer's 76 settings, 58 with the prefix characters; \"tvmgr backup\n"
      "coverage\" lists the others. C and P are named in the file's header only. A file named check, diff "
      "or\n"
      "coverage is written as ./check.\n"
      "Exit codes: 0 complete, 1 damaged or not written, 3 something is missing, 4 the printer is silent.\n\n"
      "Examples:\n  tvmgr backup shop7.bak\n  tvmgr backup looks.bak --sections \"graphics,fonts\"\n"
      "  tvmgr backup check shop7.bak\n  tvmgr backup diff monday.bak tuesday.bak");

  const CParser check_parser =
      parser.AddCommand("check", "tell whether a file is a whole backup, and what it holds");
  check_parser.Add("file", check->file, "the backup").Required();
  check_parser.Footer(
      "Needs no printer. Every setting has to stand there once, in its place and with a value, the prefix\n"
      "characters too; every file with its own download command, whose checksum and size are verified.\n" +
      std::string(kNotSeenByChecks) +
      "\nA backup holds 55 of the printer's 76 settings, 58 with the prefix characters.\n"
      "Exit codes: 0 complete, 1 not complete, 5 unreadable or no backup.\n\n"
      "Example:\n  tvmgr backup check shop7.bak --json");

  const CParser diff_parser = parser.AddCommand("diff", "compare two backups");
  diff_parser.Add("a", diff->first, "a backup").Required();
  diff_parser.Add("b", diff->second, "another backup").Required();
  diff_parser.Footer(
      "Needs no printer. The time stamps and the order of files do not count. What backups do not hold is "
      "not\n"
      "compared: 55 of the printer's 76 settings, 58 with the prefix characters, are.\n"
      "Exit codes: 0 equal, 1 different, 3 a file is not complete, 5 one is unreadable or no backup.\n\n"
      "Example:\n  tvmgr backup diff monday.bak tuesday.bak");

  const CParser coverage = parser.AddCommand("coverage", "list which settings a backup holds");
  coverage.Footer("Needs no printer.\n\nExample:\n  tvmgr backup coverage");
  AddTableOptions(coverage, {"ID", "KEY", "IN BACKUPS"});

  commands.push_back({coverage, [&global, options] {
                        RefuseOuterOptions(*options);
                        return RunBackupCoverage(global);
                      }});
  commands.push_back({check_parser, [&global, options, check] {
                        RefuseOuterOptions(*options);
                        return RunBackupCheck(global, *check);
                      }});
  commands.push_back({diff_parser, [&global, options, diff] {
                        RefuseOuterOptions(*options);
                        return RunBackupDiff(global, *diff);
                      }});
  commands.push_back({parser, [&global, options] { return RunBackup(global, *options); },
                      tagWatch{90, std::string("The backup is not whole. ") + kLeftByReading}});
}

tagCommand AddRestore(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagRestoreOptions>();
  const CParser parser = program.AddCommand("restore", "send a backup back to the printer");
  parser.Add("file", options->file, "the backup").Required();
  parser.AddFlag("--yes", options->yes, "do not ask");
  parser.AddFlag("--force", options->force,
                 "also what is no complete backup, or has values that the labels do not allow");
  const COption settings = parser.AddFlag("--settings", options->settings, "only the settings, one by one");
  const COption files =
      parser.Add("--files", options->names, "only stored files, one by one: all, or these names and patterns")
          .AnyWords()
          .Excludes(settings);
  parser.AddFlag("--dry-run", options->dry_run, kDryRunHelp);
  AddLabelsOption(parser, options->labels);
  parser.Footer(
      "Files that the backup does not name stay. Afterwards the settings that the backup has values for are\n"
      "compared with the printer's, and the files are read back and compared by content; those that the\n"
      "printer does not send back, by name. Their protection is not compared. A backup with settings\n"
      "without a value is sent with --force only; those stay as they are on the printer.\n"
      "A backup holds 55 of the printer's 76 settings, 58 with the prefix characters. --settings compares\n"
      "first, writes what differs, and proves it as \"tvmgr apply\" does, without the prefix characters;\n"
      "--files stores one file after the other and reads each back.\n" +
      std::string(kDryRunFooter) +
      "\nExit codes: 0 equal, 1 different or refused, 3 not everything could be compared, 4 printer "
      "silent.\n\n"
      "Examples:\n  tvmgr restore shop7.bak\n  tvmgr --address 192.0.2.7 restore shop7.bak --yes --json\n"
      "  tvmgr restore shop7.bak --settings --dry-run\n  tvmgr restore shop7.bak --files LOGO.PNG \"*.ZPL\"");
  AddTableOptions(parser,
                  {"WHAT", "BACKUP", "PRINTER", "VERDICT", "KEY", "NAME", "NOW", "WANTED", "GOT", "REASON"});
  const auto run = [&global, options, files] {
    options->files = files.IsGiven();
    // Without names the parser brings an empty one.
    std::erase(options->names, std::string());
    return RunRestore(global, *options);
  };
  return {parser, run, tagWatch{90, kLeftByWriting}};
}

}  // namespace

void AddBackupCommands(const CParser& program, const tagGlobalOptions& global,
                       std::vector<tagCommand>& commands) {
  AddBackup(program, global, commands);
  commands.push_back(AddRestore(program, global));
}

}  // namespace tvmgr
