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
constexpr int kHeaderFields = 5;

constexpr std::string_view kDevice = "E:";
constexpr std::string_view kFormatExtension = ".FMT";
constexpr std::string_view kProgramExtension = ".ZPL";

bool EndsWith(std::string_view name, std::string_view extension) {
  return name.size() >= extension.size() &&
         EqualsIgnoringCase(name.substr(name.size() - extension.size()), extension);
}

/** Whether a format's own name has one of the two extensions; an extension alone is no name with one. */
bool HasFormatExtension(std::string_view name) {
  return name.size() > kFormatExtension.size() &&
         (EndsWith(name, kFormatExtension) || EndsWith(name, kProgramExtension));
}

/**
 * The data field of the first "~DY" download command: everything after its fifth comma. None in a format.
 */
bool FindObjectData(std::string_view answer, const CLeadBytes& leads, std::string_view& data) {
  std::size_t at = leads.Find(answer, kDownloadObject);
  if (at != std::string_view::npos &&
      leads.Find(answer.substr(0, at), kDownloadFormat) != std::string_view::npos) {
    return false;
  }
  for (int field = 0; field < kHeaderFields && at != std::string_view::npos; ++field) {
    at = leads.Find(answer, ",", at + 1);
  }
  if (at == std::string_view::npos) {
    return false;
  }
  data = answer.substr(at + 1);
  return true;
}

/** The first of the two markers, which are equally long; npos when there is none. */
std::size_t FindMarker(std::string_view field) {
  std::size_t at = field.find(':');
  while (at != std::string_view::npos && !field.substr(at).starts_with(kCompressedMarker) &&
         !field.substr(at).starts_with(kPlainMarker)) {
    at = field.find(':', at + 1);
  }
  return at;
}

/**
 * Decodes what stands before the next ":"; the checksum behind that is made of base64 characters too. A
 * payload may have many megabytes, so each piece is decoded first and searched then, while it is at hand; it fits a
 * small first cache and is large enough that its own costs do not count.
 * Returns how far it went.
 */
std::size_t DecodeToColon(std::string_view text, std::string& data) {
  constexpr std::size_t kPiece = 16384;
  data.clear();
  data.reserve(LargestDecodedSize(text.size()));
  CBase64Decoder decoder;
  std::size_t at = 0;
  std::size_t colon = std::string_view::npos;
  while (at < text.size() && colon == std::string_view::npos) {
    const std::string_view piece = text.substr(at, kPiece);
    const CBase64Decoder decoder_before = decoder;
    const std::size_t size_before = data.size();
    decoder.Append(piece, data);
    colon = piece.find(':');
    if (colon != std::string_view::npos) {
      decoder = decoder_before;
      data.resize(size_before);
      decoder.Append(piece.substr(0, colon), data);
    }
    at += std::min(colon, piece.size());
  }
  decoder.Finish(data);
  if (data.size() < data.capacity() / 2) {
    data.shrink_to_fit();  // it ended early, or was mostly junk
  }
  return at;
}

/** Decodes the payload behind the first ":Z64:" or, without one, the first ":B64:"; `marker` is the first. */
void DecodePayload(std::string_view field, std::size_t marker, std::string& data) {
  const std::size_t begin = marker + kPlainMarker.size();
  const std::size_t end = begin + DecodeToColon(field.substr(begin), data);
  if (field.substr(marker).starts_with(kCompressedMarker)) {
    return;
  }
  // The closing ":" of this marker, or any other behind its payload, may open the one that goes first.
  const std::size_t shared = begin - 1;
  const std::size_t compressed =
      field.substr(shared).starts_with(kCompressedMarker) ? shared : field.find(kCompressedMarker, end);
  if (compressed != std::string_view::npos) {
    DecodeToColon(field.substr(compressed + kCompressedMarker.size()), data);
  }
}

}  // namespace

std::int32_t ExtractPayload(std::string_view answer, std::string& data, const CLeadBytes& leads) {
  data.clear();
  std::string_view field;
  if (!FindObjectData(answer, leads, field)) {
    std::string(answer).swap(data);  // not assigned, which would keep the memory of a larger file before it
    return TVMGR_OK;
  }
  const std::size_t marker = FindMarker(field);
  if (marker == std::string_view::npos) {
    std::string(field).swap(data);
    return TVMGR_OK;
  }
  try {
    DecodePayload(field, marker, data);
  } catch (const std::bad_alloc&) {
    data = {};
    return TVMGR_PAYLOAD_UNREADABLE;
  }
  return TVMGR_OK;
}

void CompleteFormatName(std::string& format, std::string_view requested_name, const CLeadBytes& leads) {
  const std::size_t command = leads.Find(format, kDownloadFormat);
  if (command == std::string::npos) {
    return;
  }
  const std::size_t field = command + kDownloadFormat.size();
  const std::size_t field_end = std::min(leads.FindFirstOf(format, kNameEnds, field), format.size());
  const std::size_t begin = std::min(format.find_first_not_of(kWhitespace, field), field_end);
  const std::size_t end =
      begin == field_end ? begin : format.find_last_not_of(kWhitespace, field_end - 1) + 1;
  std::string name = format.substr(begin, end - begin);
  if (name.size() < 2 || name[1] != ':') {
    name.insert(0, kDevice);
  }
  if (!HasFormatExtension(name)) {
    name.append(EndsWith(requested_name, kProgramExtension) ? kProgramExtension : kFormatExtension);
  }
  format.replace(begin, end - begin, name);
}

}  // namespace tavira
