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

/** Setting.ini in the folder of a file; empty for none. */
WideString BesideFile(WideString path) {
  if (path.empty()) {
    return path;
  }
  const std::size_t last = path.find_last_of(WidenAscii("\\/"));
  path.resize(last == WideString::npos ? 0 : last + 1);
  return path + WidenAscii(kFileName);
}

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
  const WideString path = ListsPath();
  if (path.empty()) {
    return kNoPath;
  }
  names.printers = ReadList(file_, path, "SupportPrinter");
  names.drivers = ReadList(file_, path, "SupportDriver");
  return TVMGR_OK;
}

// A value of the ANSI code page. Read wide all the same, because the path may have characters that it lacks.
WideString CModuleSettings::UserHubName(ITextCodec& text) const {
  const WideString path = BesideFile(file_.ModulePath());
  WideString name = path.empty() ? path : file_.ReadWide(path, "Search", "UserUSBHubName", kHubNameSize);
  while (text.ToAnsi(name).size() >= kHubNameSize) {
    name.pop_back();
  }
  return text.FromAnsi(text.ToAnsi(name));
}

// The directory without its drive: the file is looked for on the current drive.
WideString CModuleSettings::ListsPath() const {
  WideString path = file_.ModulePath();
  if (path.size() >= kPathSize) {
    return {};
  }
  if (path.size() > 1 && path[1] == ':') {
    path.erase(0, 2);
  }
  path = BesideFile(std::move(path));
  return path.size() < kPathSize ? path : WideString();
}

}  // namespace tavira
