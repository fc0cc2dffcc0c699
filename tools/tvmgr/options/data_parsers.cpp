// The arguments of the commands for operations, stored files and raw data.
#include <memory>

#include "commands/commands.h"
#include "options/command_parsers.h"

namespace tvmgr {
namespace {

constexpr double kMaxTimeoutSeconds = 86'400;

tagCommand AddOperation(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagOperationOptions>();
  const CParser parser = program.AddCommand("op", "run a printer operation and wait until it is done");
  parser.Add("name", options->name, "the operation");
  parser.AddFlag("--list", options->list, "show the operations");
  parser.Add("--file", options->data.file, "with send-data: a file");
  parser.Add("--text", options->data.text, "with send-data: a text");
  parser.AddFlag("--yes", options->yes, "confirm operations that wipe or reset");
  parser.Footer(
      "Operations that wipe or reset have to be confirmed: by typing yes, or with --yes. After a wipe the "
      "lists\n"
      "are read again and what remained is named; device R: has no lists, so nothing is known of it.\n"
      "Exit code 3 when the printer is still busy at the end.\n\n"
      "Examples:\n  tvmgr op --list\n  tvmgr op print-configuration\n  tvmgr op wipe-graphics --yes\n"
      "  tvmgr op send-data --file label.prn");
  AddTableOptions(parser, {"OPERATION", "CONFIRM", "WHAT IT DOES"});
  return {parser, [&global, options] { return RunOperation(global, *options); },
          tagWatch{60, kLeftByWriting}};
}

tagCommand AddSend(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagSendOptions>();
  const CParser parser = program.AddCommand("send", "send bytes to the printer as they are");
  parser.Add("--file", options->data.file, "a file");
  parser.Add("--text", options->data.text, "a text, sent in the ANSI code page");
  parser.Add("stdin", options->data.stdin_mark, "- reads stdin");
  parser.AddFlag("--allow-resolution-change", options->allow_resolution_change,
                 "the guard puts the resolutions to 600 meanwhile");
  parser.Footer(
      "The printer is asked for its state first; nothing is read back, so its answer to the bytes is not "
      "seen.\n"
      "On a printer whose mode (84) is not D, or whose resolutions are to be changed, the guard writes "
      "these\n"
      "settings and saves them, before and after the bytes.\n\n"
      "Examples:\n  tvmgr send --text \"^XA^FO50,50^A0,40^FDHello^FS^XZ\"\n  tvmgr send --file label.prn\n"
      "  type label.prn | tvmgr send -");
  return {parser, [&global, options] { return RunSend(global, *options); }, tagWatch{30, kLeftByWriting}};
}

tagCommand AddFiles(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagFilesOptions>();
  const CParser parser = program.AddCommand("files", "list the files that the printer stores");
  parser.Add("--list", options->list,
             "png, grf, ttf, tte, fmt, zpl, background, cnv, or graphic, font, format for several");
  parser.Footer(
      "Exit code 3 when the printer's answers were cut off, so that there may be more files.\n\n"
      "Examples:\n  tvmgr files\n  tvmgr files --list font --json");
  AddTableOptions(parser, {"TYPE", "KIND", "NAME"});
  return {parser, [&global, options] { return RunFiles(global, *options); }, tagWatch{30, kLeftByReading}};
}

tagCommand AddFetch(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagFetchOptions>();
  const CParser parser = program.AddCommand("fetch", "fetch a stored file");
  parser.Add("name", options->name, "the file's name with extension, or a pattern: \"*.PNG\", \"E:*\"")
      .Required();
  parser.Add("-o,--output", options->output,
             "write to this file, not to stdout; with a pattern: to this folder");
  parser.Add("--wait", options->wait_s, "seconds to wait for the first byte")
      .Range(0.1, kMaxTimeoutSeconds)
      .ShowsDefault();
  parser.AddFlag("--unlisted", options->unlisted, "do not look the name up in the printer's lists first");
  parser.AddFlag("--yes", options->yes, "overwrite an existing file without asking");
  parser.Footer(
      "Graphics, fonts and the background file come as the bytes of the file, stored formats (FMT, ZPL) as\n"
      "the command that stores them. A pattern (* any characters, ? one) fetches every file that matches "
      "into\n"
      "a folder, with a verdict for each; one that matches nothing is an error.\n\n"
      "Examples:\n  tvmgr fetch LOGO.PNG -o logo.png\n  tvmgr fetch LABEL.ZPL > label.zpl\n"
      "  tvmgr fetch \"E:*\" -o stored");
  AddTableOptions(parser, {"NAME", "BYTES", "FILE", "REASON"});
  return {parser, [&global, options] { return RunFetch(global, *options); }, tagWatch{30, kLeftByReading}};
}

tagCommand AddPut(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagPutOptions>();
  const CParser parser = program.AddCommand("put", "store a file on the printer");
  parser.Add("file", options->file, "the file on this computer").Required();
  parser.Add("--name", options->name, "name on the printer; else the file's own, in upper case");
  parser.Add("--kind", options->kind, "graphic, format, font or background; else by the extension")
      .OneOf({"graphic", "format", "font", "background"});
  parser.Add("--row-bytes", options->row_bytes, "bytes in one row of a GRF graphic");
  parser.AddFlag("--yes", options->yes, "overwrite a file of the printer without asking");
  parser.AddFlag("--dry-run", options->dry_run, kDryRunHelp);
  parser.Footer(
      "A file that holds a download command (~DY..., ^XA^DF...) is sent as it is; a PNG, GRF, TTF, TTE or\n"
      "BGD file and the text of a format are put into one. Afterwards the file is read back and compared; "
      "exit\n"
      "code 3 when the printer lists it but does not send it back.\n" +
      std::string(kDryRunFooter) +
      "\n\nExamples:\n  tvmgr put logo.png\n  tvmgr put arial.ttf --name ARIAL.TTF\n  tvmgr put label.zpl");
  return {parser, [&global, options] { return RunPut(global, *options); }, tagWatch{60, kLeftByWriting}};
}

tagCommand AddRemove(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagRemoveOptions>();
  const CParser parser = program.AddCommand("rm", "delete stored files");
  parser.Add("name", options->names, "names with extension, or patterns: \"*.PNG\"").Required();
  parser.AddFlag("--yes", options->yes, "do not ask");
  parser.AddFlag("--dry-run", options->dry_run, kDryRunHelp);
  parser.Footer(
      "What a pattern (* any characters, ? one) matches is shown before it is asked; one that matches "
      "nothing\n"
      "is an error. Afterwards the lists are read again. Exit code 1 when a file is still there, or never "
      "was.\n" +
      std::string(kDryRunFooter) +
      "\n\nExamples:\n  tvmgr rm LOGO.PNG\n  tvmgr rm OLD1.ZPL OLD2.ZPL --yes\n  tvmgr rm \"*.PNG\" "
      "--dry-run");
  AddTableOptions(parser, {"NAME", "REMOVED", "REASON"});
  return {parser, [&global, options] { return RunRemove(global, *options); }, tagWatch{60, kLeftByWriting}};
}

}  // namespace

void AddDataCommands(const CParser& program, const tagGlobalOptions& global,
                     std::vector<tagCommand>& commands) {
  commands.push_back(AddOperation(program, global));
  commands.push_back(AddFiles(program, global));
  commands.push_back(AddFetch(program, global));
  commands.push_back(AddPut(program, global));
  commands.push_back(AddRemove(program, global));
  commands.push_back(AddSend(program, global));
}

}  // namespace tvmgr
