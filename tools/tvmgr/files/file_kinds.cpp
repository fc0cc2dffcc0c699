#include "files/file_kinds.h"

#include <algorithm>

#include "output/command_error.h"
#include "output/text_encoding.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

constexpr tagFileKind kKinds[] = {
    {TVMGR_LIST_PNG, "png", "graphic", ".PNG", 'P', TVMGR_REQUEST_REGISTER_GRAPHIC,
     TVMGR_REQUEST_DELETE_GRAPHIC},
    {TVMGR_LIST_GRF, "grf", "graphic", ".GRF", 'G', TVMGR_REQUEST_REGISTER_GRAPHIC,
     TVMGR_REQUEST_DELETE_GRAPHIC},
    {TVMGR_LIST_TTF, "ttf", "font", ".TTF", 'T', TVMGR_REQUEST_REGISTER_FONT, TVMGR_REQUEST_DELETE_FONT},
    {TVMGR_LIST_TTE, "tte", "font", ".TTE", 'E', TVMGR_REQUEST_REGISTER_FONT, TVMGR_REQUEST_DELETE_FONT},
    {TVMGR_LIST_FMT, "fmt", "format", ".FMT", 0, TVMGR_REQUEST_REGISTER_FORMAT, TVMGR_REQUEST_DELETE_FORMAT},
    {TVMGR_LIST_ZPL, "zpl", "format", ".ZPL", 0, TVMGR_REQUEST_REGISTER_FORMAT, TVMGR_REQUEST_DELETE_FORMAT},
    {TVMGR_LIST_BACKGROUND, "background", "background", ".BGD", 'B', TVMGR_REQUEST_BACKGROUND,
     TVMGR_REQUEST_BACKGROUND},
    {TVMGR_LIST_CNV, "cnv", "conversion", ".CNV", 0, 0, 0},
};

constexpr std::size_t kMaxBaseName = 8;
constexpr std::size_t kMaxExtension = 3;

}  // namespace

std::span<const tagFileKind> AllFileKinds() {
  return kKinds;
}

const tagFileKind* KindOfFile(std::string_view file_name) {
  const std::string upper = UpperAscii(file_name);
  const auto* const found = std::find_if(std::begin(kKinds), std::end(kKinds), [&](const tagFileKind& kind) {
    return upper.size() > kind.extension.size() && upper.ends_with(kind.extension);
  });
  return found == std::end(kKinds) ? nullptr : found;
}

bool IsFormat(const tagFileKind& kind) {
  return kind.group == "format";
}

void RequireFileName(std::string_view name) {
  // The printer counts and lists the characters of the ANSI code page.
  const std::string listed = RequireAnsi(name);
  const std::size_t dot = listed.rfind('.');
  const bool has_parts = dot != std::string::npos && dot > 0 && dot + 1 < listed.size();
  if (!has_parts || dot > kMaxBaseName || listed.size() - dot - 1 > kMaxExtension) {
    throw CUsageError("\"" + std::string(name) +
                      "\" is no file name of the printer: it has up to 8 characters, a dot and up to 3 more "
                      "(put: --name gives another)");
  }
  const bool clean = std::none_of(name.begin(), name.end(), [](char c) {
    return static_cast<unsigned char>(c) <= 0x20 || c == 0x7F ||
           std::string_view("^~,:*?").find(c) != std::string_view::npos;
  });
  if (!clean) {
    throw CUsageError("the file name \"" + std::string(name) +
                      "\" holds a blank, a control character or one of ^ ~ , : * ?");
  }
}

}  // namespace tvmgr
