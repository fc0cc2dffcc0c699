#include "storage/stored_data.h"

#include <algorithm>
#include <cstring>

#include "command/fixed_commands.h"
#include "storage/payload.h"

namespace tavira {
namespace {

constexpr std::string_view kUploadFormat = "^HFE:";
constexpr std::string_view kUploadObject = "^H(YE:";

}  // namespace

std::int32_t CStoredData::Load(const TvmgrChar* name, std::uint8_t mode, std::uint32_t timeout_ms) {
  if (!port_.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  const WideView wide_name = ViewHostText(name);
  const std::string ansi_name = text_.ToAnsi(wide_name);
  // A name with replaced characters would be another file's, and "?" stands for any character.
  if (ansi_name.empty() || !text_.IsWhole(wide_name, ansi_name)) {
    return TVMGR_BAD_ARGUMENT;
  }
  port_.NewCommand()
      .append(kOpenFormat)
      .append(mode == kFormatMode ? kUploadFormat : kUploadObject)
      .append(ansi_name)
      .append(kCloseFormat);
  std::int32_t result = port_.Exchange(timeout_ms);
  if (result != TVMGR_OK) {
    return result;
  }
  raw_answer_ = std::move(port_.Link().ReceiveBuffer());
  const CLeadBytes leads = text_.LeadBytes();
  result = ExtractPayload(raw_answer_, data_, leads);
  if (result == TVMGR_OK && mode == kFormatMode) {
    CompleteFormatName(data_, ansi_name, leads);
  }
  return result;
}

std::int32_t CStoredData::Get(std::uint8_t* buffer, std::uint32_t* length) const {
  if (length == nullptr) {
    return TVMGR_BAD_ARGUMENT;
  }
  const auto size = static_cast<std::uint32_t>(data_.size());
  if (buffer != nullptr) {
    const std::uint32_t copied = std::min(*length, size);
    if (copied != 0) {
      std::memcpy(buffer, data_.data(), copied);
    }
  }
  *length = size;
  return TVMGR_OK;
}

}  // namespace tavira
