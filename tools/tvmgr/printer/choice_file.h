#pragma once

#include "printer/choice_text.h"

namespace tvmgr {

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
