#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace tvmgr {

/** One of several printers. UTF-8. */
struct tagListedPrinter {
  std::string kind;  /**< "port", "device", "address"; "name": still to be looked for by a search */
  std::string value; /**< what chooses it; of a "name" that name */
  std::string name;  /**< as a search found it; may be empty */
  std::string where; /**< of the entry: "line 3"; for remarks */
};

/** "192.0.2.7 (Dock 3)". */
std::string LabelOf(const tagListedPrinter& printer);

/** What stands in front of "=" in an entry to overrule its look. */
inline constexpr std::string_view kPrinterKinds[] = {"address", "port", "device", "name"};

/**
 * The printers of "192.0.2.7,USB001,Dock 3": addresses, ports, device paths, names. A blank makes a name, and so does
 * "name=" in front; "address=", "port=" and "device=" overrule the look of an entry. Ends the command (usage) at an entry
 * that cannot be one, and when there is none.
 */
std::vector<tagListedPrinter> ParsePrinterText(std::string_view text);

/**
 * As ParsePrinterText, from the bytes of a file with one printer a line; "#" begins a comment, at the start of a line or
 * behind a blank. UTF-8, or UTF-16 with its mark. Ends the command (input file) at a line that cannot be one.
 *
 * @param path  for messages
 */
std::vector<tagListedPrinter> ParsePrinterFile(std::string_view bytes, const std::string& path);

/** The printers of the document that "search --json" wrote; its own name goes before the model. */
std::vector<tagListedPrinter> PrintersOfSearch(const nlohmann::ordered_json& document);

/**
 * Puts what the search found in the place of each name. A name that none has, or several have, stays a "name";
 * the words for it are in `problems`, one for each printer, empty for all others.
 */
void FindNames(std::vector<tagListedPrinter>& printers, const std::vector<tagListedPrinter>& found,
               std::vector<std::string>& problems);

/**
 * Takes out what stands there before, whatever the case of its letters, and its place in `problems`; a sentence for each that
 * is taken out.
 */
std::vector<std::string> MergeDuplicates(std::vector<tagListedPrinter>& printers,
                                         std::vector<std::string>& problems);

}  // namespace tvmgr
