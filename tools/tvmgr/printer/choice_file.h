#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tvmgr {

/** A printer as "use" remembers it. UTF-8. */
struct tagRememberedPrinter {
  std::string kind;  /**< "port", "device" or "address" */
  std::string value; /**< port of the print spooler, USB device path, or host name or address */
  std::string name;  /**< as the search found it; may be empty */
};

/** What is kept from command to command. */
struct tagChoiceFile {
  std::optional<tagRememberedPrinter> chosen;
  std::vector<tagRememberedPrinter> found; /**< by the last search, in the order of its numbers */
};

/** The environment variable that puts another path in place of the file's own. */
constexpr char kChoiceFileVariable[] = "TVMGR_CONFIG";

/**
 * Reads the file choice.json in the user's folder for application data. No file: nothing is remembered. A
 * file that cannot be understood ends the command: it may name another printer than the one that would be
 * taken without it.
 */
tagChoiceFile LoadChoiceFile();

/** As LoadChoiceFile, for whoever is about to replace what is remembered: a damaged file counts for none. */
tagChoiceFile LoadChoiceFileOrNone();

/** Writes the file anew, in one step; ends the command when that fails. */
void SaveChoiceFile(const tagChoiceFile& choice);

}  // namespace tvmgr
