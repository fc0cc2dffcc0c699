#include "discovery/module_settings.h"

namespace tavira {
namespace {

constexpr std::string_view kFileName = "Setting.ini";
constexpr std::int32_t kNoPath = -1;
constexpr int kKeyCount = 20;
// Buffers, with room for the terminator.
constexpr std::size_t kPathSize = 260;
constexpr std::size_t kNameSize = 260;
constexpr std::size_t kHubNameSize = 64;

std::vector<WideString> ReadList(IProfileFile& file, const WideString& path, const char* section) {
  std::vector<WideString> list;
  for (int key = 0; key < kKeyCount; ++key) {
    WideString value = file.ReadWide(path, section, std::to_string(key).c_str(), kNameSize);
    if (!value.empty()) {
      list.push_back(std::move(value));
    }
  }
  return list;
}

}  // namespace

std::int32_t CModuleSettings::ReadSupportedNames(tagSupportedNames& names) const {
  const WideString path = Path();
  if (path.empty()) {
    return kNoPath;
  }
  names.printers = ReadList(file_, path, "SupportPrinter");
  names.drivers = ReadList(file_, path, "SupportDriver");
  return TVMGR_OK;
}

std::string CModuleSettings::UserHubName() const {
  const WideString path = Path();
  return path.empty() ? std::string() : file_.ReadAnsi(path, "Search", "UserUSBHubName", kHubNameSize);
}

// The directory without its drive: the file is looked for on the current drive.
WideString CModuleSettings::Path() const {
  WideString path = file_.ModulePath();
  if (path.empty() || path.size() >= kPathSize) {
    return {};
  }
  if (path.size() > 1 && path[1] == ':') {
    path.erase(0, 2);
  }
  const WideString separators = WidenAscii("\\/");
  const std::size_t last = path.find_last_of(separators);
  path.resize(last == WideString::npos ? 0 : last + 1);
  path += WidenAscii(kFileName);
  return path.size() < kPathSize ? path : WideString();
}

}  // namespace tavira
