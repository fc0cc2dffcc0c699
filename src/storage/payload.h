#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/lead_bytes.h"

namespace tavira {

/**
 * Takes a file's bytes out of the answer to an upload command: the decoded payload of its data field, the
 * field itself when it carries no ":Z64:" or ":B64:" marker, or the whole answer when it is no download
 * command of an object: a "~DY" behind a "^DF" is text of a stored format. A ":Z64:" payload stays compressed.
 * 0, or −10 with `data` empty when a payload cannot be decoded. Throws std::bad_alloc.
 */
std::int32_t ExtractPayload(std::string_view answer, std::string& data, const CLeadBytes& leads = {});

/**
 * Completes the file name behind the first "^DF" of a stored format: "E:" in front when it names no
 * device, behind it ".ZPL" when `requested_name` ends so or is that, else ".FMT", when it has neither
 * extension. Every other byte stays.
 */
void CompleteFormatName(std::string& format, std::string_view requested_name, const CLeadBytes& leads = {});

}  // namespace tavira
