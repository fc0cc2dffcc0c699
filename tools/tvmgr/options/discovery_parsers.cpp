// The arguments of the commands that find and choose printers.
#include <memory>

#include "commands/commands.h"
#include "options/command_parsers.h"

namespace tvmgr {
namespace {

tagCommand AddSearch(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagSearchOptions>();
  const CParser parser = program.AddCommand("search", "find printers");
  parser.Add("kind", options->kind, "usb, network or all").Required().OneOf({"usb", "network", "all"});
  parser.AddFlag("--no-numbers", options->forgets,
                 "do not remember what was found: \"tvmgr use NUMBER\" goes by the search before");
  parser.Footer(
      "A search takes 3 s for each kind; printers of the network are asked for their names at its end, all "
      "at\n"
      "once. One that announced itself and then does not answer costs up to 36 s more and is not listed: "
      "the\n"
      "module does not name it; that the asking took long is told. The network search sends one broadcast "
      "datagram to UDP port 3289, and finds printers of the same network\n"
      "segment only. Ctrl-C ends it at once with what was found so far. Exit code 3 when it was ended so, "
      "or\n"
      "one half of \"all\" failed.\n\n"
      "Examples:\n  tvmgr search all\n  tvmgr search network --json");
  AddTableOptions(parser, {"NO", "KIND", "NAME", "MORE", "WHERE"});
  return {parser, [&global, options] { return RunSearch(global, *options); }};
}

tagCommand AddUse(const CParser& program, const tagGlobalOptions& global) {
  const auto options = std::make_shared<tagUseOptions>();
  const CParser parser = program.AddCommand("use", "remember a printer for later commands");
  parser.Add("printer", options->printer,
             "a number of the last search, an address, a port (USB001) or a device path");
  parser.Add("--as", options->as, "take the text as port, address or device whatever it looks like")
      .OneOf({"port", "address", "device"});
  parser.AddFlag("--clear", options->clear, "remember none");
  parser.Footer(
      "The printer is asked for its status once; one that does not answer is remembered all the same, with a "
      "remark\n(--no-check: not asked). Without arguments it shows what is remembered. --port, --device and "
      "--address and the environment\n"
      "variables TVMGR_PORT, TVMGR_DEVICE and TVMGR_ADDRESS go before it. It is kept in\n"
      "%APPDATA%\\tvmgr\\choice.json; TVMGR_CONFIG names another file.\n\n"
      "Examples:\n  tvmgr use 2\n  tvmgr use 192.0.2.7\n  tvmgr use USB001\n  tvmgr use --clear");
  return {parser, [&global, options] { return RunUse(global, *options); }};
}

tagCommand AddInfo(const CParser& program, const tagGlobalOptions& global) {
  const CParser parser = program.AddCommand("info", "show the chosen printer and what it says it is");
  parser.Footer(
      "Exit code 4 when the printer did not answer.\n\n"
      "Examples:\n  tvmgr info\n  tvmgr --address 192.0.2.7 info --json");
  return {parser, [&global] { return RunInfo(global); }, tagWatch{30, kLeftByReading}};
}

}  // namespace

void AddDiscoveryCommands(const CParser& program, const tagGlobalOptions& global,
                          std::vector<tagCommand>& commands) {
  commands.push_back(AddSearch(program, global));
  commands.push_back(AddUse(program, global));
  commands.push_back(AddInfo(program, global));
}

}  // namespace tvmgr
