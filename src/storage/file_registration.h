#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "link/printer_port.h"
#include "platform/text_codec.h"
#include "storage/file_request.h"
#include "storage/registered_files.h"

namespace tavira {

/**
 * Stores the request's file in the printer's memory and waits until the printer lists it. The request holds
 * the printer's own download command, as an upload or a backup does.
 *
 * 0, −2 without a link, −7 (nothing sent) not a register kind, no data, or no file name in it, −82 not listed
 * after ten passes, else the code of the exchange that failed. Whether a stored format is listed does not
 * change the result.
 */
std::int32_t RegisterStoredFile(CPrinterPort& port, CRegisteredFiles& files, ITextCodec& text,
                                const tagFileRequest& request);

/**
 * The file name, with extension and without device, in a "~DY" or "^DF" download command; empty when there is
 * none. A "~DY" name without extension gets the one its extension letter stands for.
 */
std::string FindDownloadName(std::string_view command, const CLeadBytes& leads = {});

}  // namespace tavira
