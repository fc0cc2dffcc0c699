#pragma once

#include <cstdint>

#include "link/printer_port.h"
#include "storage/file_request.h"
#include "storage/registered_files.h"

namespace tavira {

/**
 * Deletes the file that the request names from device E: and waits until the printer no longer lists it. 0,
 * −2 without a link, −7 empty name (nothing sent) or not a delete kind (sent all the same), −82 still listed
 * after ten passes, else the code of the exchange that failed. The background file is not searched for and
 * always takes ten passes.
 */
std::int32_t DeleteStoredFile(CPrinterPort& port, CRegisteredFiles& files, const tagFileRequest& request);

}  // namespace tavira
