#pragma once

#include <optional>
#include <string>
#include <string_view>
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

/** The contents of choice.json; nothing unless all of them are understood. */
std::optional<tagChoiceFile> ParseChoice(std::string_view text);

/** As ParseChoice reads them; bytes that are no UTF-8 are replaced. */
std::string FormatChoice(const tagChoiceFile& choice);

}  // namespace tvmgr
