#pragma once

#include <string>
#include <vector>

#include "backup_file/backup_contents.h"
#include "options/options.h"
#include "printer/manager_session.h"

namespace tvmgr {

/** The name of a stored file of a backup, UTF-8. */
std::string NameOf(const tagBackupFile& file);

/**
 * The files of a backup that names and patterns mean, in the backup's order; without words all of them. Ends the
 * command when one of the words means none, or the backup holds no files.
 */
std::vector<tagBackupFile> ChooseFiles(const tagBackupContents& contents,
                                       const std::vector<std::string>& words);

/**
 * Stores files of a backup one after the other, each read back and compared, with one verdict for each. The printer's
 * lists have been read. A protected file of the same name is replaced, as by a whole restore; the protection that the
 * backup has is set, which no printer shows.
 */
int RestoreFiles(const tagGlobalOptions& global, const CManagerSession& session,
                 const std::vector<tagBackupFile>& files);

}  // namespace tvmgr
