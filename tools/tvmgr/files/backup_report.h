#pragma once

#include <memory>
#include <string>

#include "backup_file/backup_contents.h"
#include "options/options.h"
#include "output/json_output.h"

namespace tvmgr {

/** A backup file of the host, read and taken apart. */
struct tagBackupOnHost {
  std::string path;                   /**< as the user wrote it */
  std::unique_ptr<std::string> bytes; /**< in a place of its own: the contents look into it */
  tagBackupContents contents;
};

/** Reads a file and takes it apart, whatever it holds. One that cannot be read whole ends the command. */
tagBackupOnHost ReadBackup(const tagGlobalOptions& global, const std::string& path);

/** "complete, made 2031-05-04 13:14:15, sections SITFB, 55 settings, 3 files, 12345 bytes" */
std::string Summary(const tagBackupOnHost& backup);

/** "at byte 12345: LOGO.PNG: its data is cut off" */
std::string Explain(const tagBackupProblem& problem);

/** All problems, a line for each, indented; with a word on those that were not kept. */
std::string ExplainProblems(const tagBackupContents& contents);

/** "A backup holds 55 of the printer's 76 settings, ..." */
std::string CoverageSentence();

/** The summary as a JSON object with the problems. */
Json SummaryJson(const tagBackupOnHost& backup);

/** A byte string as JSON text: as it reads in the ANSI code page, else with its bytes escaped. */
std::string JsonText(std::string_view bytes);

}  // namespace tvmgr
