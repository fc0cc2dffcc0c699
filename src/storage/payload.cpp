#include "storage/payload.h"

#include <algorithm>
#include <new>

#include "command/text.h"
#include "storage/base64.h"
#include "tavira/TaviraManager.h"

namespace tavira {
namespace {

constexpr std::string_view kDownloadObject = "~DY";
constexpr std::string_view kDownloadFormat = "^DF";
constexpr std::string_view kCompressedMarker = ":Z64:";
constexpr std::string_view kPlainMarker = ":B64:";
constexpr std::string_view kNameEnds = ",^";
constexpr std::string_view kBlanks = " \t\r\n";
constexpr int kHeaderFields = 5;

constexpr std::string_view kDevice = "E:";
constexpr std::string_view kFormatExtension = ".FMT";
constexpr std::string_view kProgramExtension = ".ZPL";

bool EndsWith(std::string_view name, std::string_view extension) {
  return name.size() > extension.size() &&
         EqualsIgnoringCase(name.substr(name.size() - extension.size()), extension);
}

/** The data field of the first "~DY" download command: everything after its fifth comma. */
bool FindObjectData(std::string_view answer, std::string_view& data) {
  std::size_t at = answer.find(kDownloadObject);
  for (int field = 0; field < kHeaderFields && at != std::string_view::npos; ++field) {
    at = answer.find(',', at + 1);
  }
  if (at == std::string_view::npos) {
    return false;
  }
  data = answer.substr(at + 1);
  return true;
}

}  // namespace

std::int32_t ExtractPayload(std::string_view answer, std::string& data) {
  data.clear();
  std::string_view field;
  if (!FindObjectData(answer, field)) {
    data = answer;
    return TVMGR_OK;
  }
  std::size_t marker = field.find(kCompressedMarker);
  if (marker == std::string_view::npos) {
    marker = field.find(kPlainMarker);
  }
  if (marker == std::string_view::npos) {
    data = field;
    return TVMGR_OK;
  }
  // The payload ends at the next ":"; the checksum behind that is made of base64 characters too.
  std::string_view payload = field.substr(marker + kPlainMarker.size());
  payload = payload.substr(0, payload.find(':'));
  try {
    data = DecodeBase64(payload);
  } catch (const std::bad_alloc&) {
    return TVMGR_PAYLOAD_UNREADABLE;
  }
  return TVMGR_OK;
}

void CompleteFormatName(std::string& format, std::string_view requested_name) {
  const std::size_t command = format.find(kDownloadFormat);
  if (command == std::string::npos) {
    return;
  }
  const std::size_t field = command + kDownloadFormat.size();
  const std::size_t field_end = std::min(format.find_first_of(kNameEnds, field), format.size());
  const std::size_t begin = std::min(format.find_first_not_of(kBlanks, field), field_end);
  const std::size_t end = begin == field_end ? begin : format.find_last_not_of(kBlanks, field_end - 1) + 1;
  std::string name = format.substr(begin, end - begin);
  if (name.size() < 2 || name[1] != ':') {
    name.insert(0, kDevice);
  }
  if (!EndsWith(name, kFormatExtension) && !EndsWith(name, kProgramExtension)) {
    name.append(EndsWith(requested_name, kProgramExtension) ? kProgramExtension : kFormatExtension);
  }
  format.replace(begin, end - begin, name);
}

}  // namespace tavira
