#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "output/command_error.h"

namespace tvmgr {

/** Keeps members in the order in which they were added. */
using Json = nlohmann::ordered_json;

// The JSON document of a run, docs/json.md: commands put its parts together, the end of the run writes it, once.

/** The format's version: it grows when a member goes away or changes its meaning. */
constexpr int kJsonVersion = 1;

/** The command that runs, "backup check". */
void NoteJsonCommand(const std::string& command);

/** The printer that is asked, and what is being done with it: what an error names. */
void NoteJsonPrinter(const Json& printer);
void NoteJsonStep(const std::string& step);

/** What the command found out: the members of an object. Replaces what was set before. */
void SetJsonResult(Json members);

/** Adds a member to that. */
void AddJsonMember(const std::string& name, Json value);

/** Writes what is known in the middle of a run as a document on one line; the result counts as written then. */
void WriteJsonLine();

/**
 * Writes the document and a line end to stdout; after lines only when there is an error, as one more line. Text
 * that is no UTF-8 is mended. Ends the command when stdout cannot be written.
 *
 * @param error  what ended the command; null: nothing did
 */
void WriteJsonDocument(int exit_code, const CCommandError* error);

/** The one shape of printers: "port", "device" or "address", where it is, its name. Empty texts are null. */
Json PrinterJson(const std::string& kind = {}, const std::string& value = {}, const std::string& name = {});

/** The text; null when it is empty, so that nothing is known. */
Json TextOrNull(const std::string& text);

}  // namespace tvmgr
