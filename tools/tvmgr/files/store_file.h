#pragma once

#include <string>

#include "files/file_kinds.h"
#include "printer/manager_session.h"

namespace tvmgr {

/** A file on its way to the printer. */
struct tagDownload {
  std::string name;        /**< on the printer, UTF-8; of a format perhaps without extension */
  const tagFileKind* kind; /**< one that can be stored */
  std::string command;     /**< the download command, as it is sent */
};

/** The name under which the printer's lists, as last refreshed, show the file; empty when they do not. */
std::string ListedName(const CManagerSession& session, const tagDownload& download);

/**
 * Sends the file and reads it back. Returns when the printer has these contents; ends the command when it does not, and
 * (CUnproved) when it lists the file but its contents cannot be compared.
 */
void StoreFile(const CManagerSession& session, const tagDownload& download);

}  // namespace tvmgr
