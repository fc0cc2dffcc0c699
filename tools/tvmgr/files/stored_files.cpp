#include "files/stored_files.h"

#include <algorithm>

#include "backup_file/encoded_data.h"
#include "output/text_encoding.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

// "^XA^DFE:NAME^FS...^XZ", as the module hands a format out.
std::optional<std::string_view> BodyOfFormat(std::string_view command) {
  constexpr std::string_view kNameEnd = "^FS";
  constexpr std::string_view kEnd = "^XZ";
  const std::size_t begin = command.find(kNameEnd);
  const std::size_t end = command.rfind(kEnd);
  if (begin == std::string_view::npos || end == std::string_view::npos || end < begin + kNameEnd.size()) {
    return std::nullopt;
  }
  return command.substr(begin + kNameEnd.size(), end - begin - kNameEnd.size());
}

}  // namespace

bool IsStored(const CManagerSession& session, const tagFileKind& kind, std::string_view name) {
  const std::vector<std::string> names = session.FileNames(kind.list);
  return std::any_of(names.begin(), names.end(),
                     [&](const std::string& stored) { return EqualsIgnoreCase(stored, name); });
}

std::string FetchedData(const CManagerSession& session) {
  std::uint32_t size = 0;
  session.Require("TVMGR_GetStoredData", "taking the data over", 0,
                  [&] { return TVMGR_GetStoredData(nullptr, &size); });
  std::string bytes(size, '\0');
  session.Require("TVMGR_GetStoredData", "taking the data over", 0,
                  [&] { return TVMGR_GetStoredData(reinterpret_cast<std::uint8_t*>(bytes.data()), &size); });
  return bytes;
}

// No file that a printer stores begins like a zlib stream itself.
bool IsCompressed(std::string_view bytes) {
  return bytes.size() > 2 && bytes[0] == 0x78 && (0x7800 + static_cast<unsigned char>(bytes[1])) % 31 == 0;
}

EComparison CompareStored(const CManagerSession& session, const std::string& name, std::string_view bytes) {
  const tagFileKind* const kind = KindOfFile(name);
  const bool is_format = kind != nullptr && IsFormat(*kind);
  const std::wstring wide = ToWide(name);
  const std::int32_t result =
      session.Call("TVMGR_LoadStoredData", "reading " + name + " back", limit::kTransaction,
                   [&] { return TVMGR_LoadStoredData(wide.c_str(), is_format ? 1 : 0, 60'000); });
  const std::string fetched = result == TVMGR_OK ? FetchedData(session) : std::string();
  if (fetched.empty()) {
    return EComparison::kNotCompared;
  }
  if (is_format) {
    const std::optional<std::string_view> body = BodyOfFormat(fetched);
    return !body ? EComparison::kNotCompared : *body == bytes ? EComparison::kEqual : EComparison::kOther;
  }
  const bool is_equal =
      fetched == bytes || (IsCompressed(fetched) && Inflate(fetched, bytes.size()) == bytes);
  return is_equal ? EComparison::kEqual : EComparison::kOther;
}

}  // namespace tvmgr
