#pragma once

#include <string_view>

namespace tvmgr {

/**
 * True when a stored file's name can be the name of a file in a folder of this computer: it leads nowhere else, means
 * no device (CON, NUL, COM1), and comes back as it was. What printers list is not to be trusted with that.
 */
bool IsHostFileName(std::string_view name);

}  // namespace tvmgr
