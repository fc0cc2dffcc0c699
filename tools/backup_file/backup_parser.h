#pragma once

#include <string_view>

#include "backup_file/backup_contents.h"

namespace tvmgr {

/**
 * Takes a backup file apart and finds out whether it is whole: header, settings with their save command,
 * blocks of files between their attribute commands, trailer. Any bytes will do; the time grows with their
 * number only. Behind damage it goes on at the next block.
 *
 * @param bytes  the whole file; has to outlive the result, whose files look into it
 */
tagBackupContents ParseBackup(std::string_view bytes);

}  // namespace tvmgr
