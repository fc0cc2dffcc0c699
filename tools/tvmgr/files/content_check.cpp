#include "files/content_check.h"

#include <algorithm>
#include <array>

#include "output/command_error.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

constexpr std::string_view kPngSignature = "\x89PNG\r\n\x1A\n";
constexpr std::string_view kPngEnd = "IEND\xAE\x42\x60\x82";
constexpr std::array<std::string_view, 4> kFontSignatures{std::string_view("\0\1\0\0", 4), "true", "OTTO",
                                                          "ttcf"};
// Offset table and at least one table record.
constexpr std::size_t kSmallestFont = 28;

bool IsFont(std::string_view bytes) {
  return bytes.size() >= kSmallestFont &&
         std::any_of(kFontSignatures.begin(), kFontSignatures.end(),
                     [&](std::string_view signature) { return bytes.starts_with(signature); });
}

bool IsPicture(std::string_view bytes) {
  return bytes.starts_with(kPngSignature);
}

bool HasPictureEnd(std::string_view bytes) {
  return bytes.find(kPngEnd) != std::string_view::npos;
}

[[noreturn]] void Refuse(std::string_view path, const std::string& why) {
  throw CInputFileError("the file \"" + std::string(path) + "\" " + why);
}

}  // namespace

void RequireFittingContent(std::string_view path, std::string_view bytes, const tagFileKind& kind,
                           std::uint32_t row_bytes) {
  switch (kind.list) {
    case TVMGR_LIST_PNG:
      if (!IsPicture(bytes)) {
        Refuse(path, "is no PNG picture: it does not begin like one");
      }
      if (!HasPictureEnd(bytes)) {
        Refuse(path, "is a PNG picture without its end: it was cut off");
      }
      return;
    case TVMGR_LIST_TTF:
    case TVMGR_LIST_TTE:
      if (!IsFont(bytes)) {
        Refuse(path, "is no TrueType font: it does not begin like one");
      }
      return;
    case TVMGR_LIST_GRF:
      if (row_bytes == 0) {
        throw CUsageError(
            "a GRF graphic does not say how wide it is: give the bytes in one row, --row-bytes");
      }
      if (bytes.size() % row_bytes != 0) {
        throw CUsageError("--row-bytes " + std::to_string(row_bytes) + " does not fit: " +
                          std::to_string(bytes.size()) + " bytes are no whole number of rows");
      }
      return;
    default:
      return;
  }
}

bool IsEvidentlyCut(std::string_view bytes, const tagFileKind& kind) {
  if (IsFormat(kind)) {
    // In front of the letters stands the prefix character, which need not be the caret.
    bytes = bytes.substr(0, bytes.find_last_not_of(" \r\n") + 1);
    return !bytes.ends_with("XZ");
  }
  return IsPicture(bytes) && !HasPictureEnd(bytes);
}

}  // namespace tvmgr
