#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "options/options.h"
#include "output/json_output.h"

namespace tvmgr {

/** The printer that a command talks to. All texts empty: the port library chooses. */
struct tagPrinterChoice {
  std::string port;
  std::string device;
  std::string address;
  bool is_remembered = false; /**< chosen by "use", not by an option or an environment variable */
  std::string name = {};      /**< as the search found it; empty: not known */
};

/** The printer of the options and environment variables; without those, the one that "use" remembers. */
tagPrinterChoice ChoiceInForce(const tagGlobalOptions& options);

/**
 * As ChoiceInForce, for commands that change something on a printer: ends the command (usage) when none is chosen.
 * Whatever printer the port library would take then may be anybody's.
 */
tagPrinterChoice RequireChoice(const tagGlobalOptions& options);

/** A printer as "port:USB001", "address:192.0.2.7" or "device:PATH"; none for any other text. */
std::optional<tagPrinterChoice> ParseChoiceText(std::string_view text);
/** The same the other way round; empty when the port library chooses. */
std::string ChoiceText(const tagPrinterChoice& choice);

/** The choice in the shape that printers have in JSON: the address goes before the device, that before the port. */
Json PrinterJson(const tagPrinterChoice& choice);

/** "the printer at 192.0.2.7 (tvmgr use)", for questions and messages. */
std::string Describe(const tagPrinterChoice& choice);

}  // namespace tvmgr
