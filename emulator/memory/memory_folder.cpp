#include "emulator/memory/memory_folder.h"

#include <chrono>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <system_error>
#include <thread>
#include <vector>

#include "emulator/memory/folder_lock.h"
#include "emulator/printer/text_escape.h"

namespace lxemu {
namespace {

namespace fs = std::filesystem;

constexpr char kPersistentDevices[] = {kFlashDevice, kSystemDevice};
constexpr std::string_view kPrefixKeys[] = {kControlPrefixKey, kFormatPrefixKey, kDelimiterKey};
constexpr std::string_view kInForceMark = "now ";
constexpr std::string_view kSettingsFile = "settings.txt";
constexpr std::string_view kAttributesFile = "attributes.txt";
constexpr int kRenameTries = 10;
constexpr std::chrono::milliseconds kRenamePause{10};

std::string SettingsText(const tagPrinterState& state) {
  std::string text;
  for (const tagFactorySetting& setting : kFactorySettings) {
    text.append(setting.key).append("=").append(Escaped(state.settings.Saved(setting.key))).append("\n");
  }
  for (const std::string_view key : kPrefixKeys) {
    text.append(kInForceMark).append(key).append("=").append(state.settings.Current(key)).append("\n");
  }
  return text;
}

std::string AttributesText(const tagPrinterState& state) {
  std::string text;
  for (const char device : kPersistentDevices) {
    for (const tagStoredFile* file : state.files.Matching(device, "*")) {
      if (file->is_protected) {
        text.append({device, ':'}).append(HostFileName(file->name.name)).append("\n");
      }
    }
  }
  return text;
}

std::vector<std::string> LinesOf(const std::string& bytes) {
  std::istringstream text(bytes);
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) {
    lines.emplace_back(line.ends_with('\r') ? line.substr(0, line.size() - 1) : line);
  }
  return lines;
}

std::vector<std::string> LinesOf(const fs::path& path) {
  return LinesOf(ReadHostFile(path).value_or(std::string()));
}

// Lines by what stands in front of their "=".
std::map<std::string, std::string> ByKey(const std::vector<std::string>& lines) {
  std::map<std::string, std::string> by_key;
  for (const std::string& line : lines) {
    by_key[line.substr(0, line.find('='))] = line;
  }
  return by_key;
}

// What another process has written, with the lines that we changed, added or removed since the last text.
std::string Merged(const std::string& last, const std::string& ours, const fs::path& path) {
  const std::optional<std::string> theirs = ReadHostFile(path);
  if (!theirs) {
    return ours;
  }
  const auto before = ByKey(LinesOf(last));
  const auto now = ByKey(LinesOf(ours));
  auto merged = ByKey(LinesOf(*theirs));
  for (const auto& [key, line] : before) {
    if (!now.contains(key)) {
      merged.erase(key);
    }
  }
  for (const auto& [key, line] : now) {
    const auto earlier = before.find(key);
    if (earlier == before.end() || earlier->second != line) {
      merged[key] = line;
    }
  }
  std::string text;
  for (const auto& [key, line] : merged) {
    text.append(line).append("\n");
  }
  return text;
}

}  // namespace

CMemoryFolder::CMemoryFolder(fs::path folder) : folder_(std::move(folder)) {
  std::random_device random;
  temporary_name_ = "write-" + std::to_string(random()) + ".tmp";
}

std::string CMemoryFolder::Prepare() const {
  std::error_code error;
  fs::create_directories(folder_, error);
  const fs::path trial = folder_ / temporary_name_;
  std::ofstream(trial) << 'x';
  if (!fs::exists(trial, error)) {
    const std::u8string path = folder_.u8string();
    return "the memory folder \"" + std::string(path.begin(), path.end()) +
           "\" cannot be written: what the printer is told is not kept";
  }
  fs::remove(trial, error);
  return {};
}

std::optional<std::string> ReadHostFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    return std::nullopt;
  }
  std::string bytes;
  std::error_code error;
  const std::uintmax_t size = fs::file_size(path, error);
  if (!error) {
    bytes.resize(static_cast<std::size_t>(size));
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
  }
  return bytes;
}

void CMemoryFolder::Load(CPrinter& printer) {
  LoadSettings(printer);
  for (const char device : kPersistentDevices) {
    LoadFiles(printer, device);
  }
  LoadAttributes(printer);
  printer.State().files.TakeChanges();
  last_settings_ = SettingsText(printer.State());
  last_attributes_ = AttributesText(printer.State());
}

bool CMemoryFolder::Save(CPrinter& printer) {
  unsaved_files_.merge(printer.State().files.TakeChanges().files);
  const std::string attributes = AttributesText(printer.State());
  const std::string settings = SettingsText(printer.State());
  if (unsaved_files_.empty() && attributes == last_attributes_ && settings == last_settings_) {
    return true;
  }
  std::error_code error;
  fs::create_directories(folder_, error);
  const CFolderLock lock(folder_);
  const bool has_files = SaveFiles(printer);
  const bool has_attributes = SaveText(attributes, kAttributesFile, last_attributes_);
  return SaveText(settings, kSettingsFile, last_settings_) && has_attributes && has_files;
}

bool CMemoryFolder::SaveFiles(CPrinter& printer) {
  // Removals first: a file may have come back under a name that is the same to a host that ignores letter
  // case.
  for (const bool is_removal : {true, false}) {
    std::erase_if(unsaved_files_, [&](const auto& changed) {
      const auto& [device, name] = changed;
      const tagStoredFile* file = printer.State().files.Find({device, name});
      const bool is_gone = file == nullptr || file->name.name != name;
      return is_gone == is_removal && SaveFile(device, name, is_gone ? nullptr : file);
    });
  }
  return unsaved_files_.empty();
}

void CMemoryFolder::LoadSettings(CPrinter& printer) {
  CSettingMemory& settings = printer.State().settings;
  std::vector<std::pair<std::string, std::string>> in_force;
  for (const std::string& line : LinesOf(folder_ / kSettingsFile)) {
    const std::size_t equals = line.find('=');
    const std::optional<std::string> value =
        equals == line.npos ? std::nullopt : Unescaped(std::string_view(line).substr(equals + 1));
    if (!value) {
      continue;
    }
    const std::string key = line.substr(0, equals);
    if (key.starts_with(kInForceMark)) {
      in_force.emplace_back(key.substr(kInForceMark.size()), *value);
    } else {
      settings.SetSaved(key, *value);
    }
  }
  settings.LoadSaved();
  for (const auto& [key, value] : in_force) {
    settings.SetCurrent(key, value);
  }
}

void CMemoryFolder::LoadFiles(CPrinter& printer, char device) {
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder_ / std::string(1, device), error)) {
    // Foreign names that are not text of this system make u8string throw nothing, unlike string.
    const std::u8string host_name = entry.path().filename().u8string();
    const std::optional<std::string> name = PrinterFileName(std::string(host_name.begin(), host_name.end()));
    std::optional<std::string> bytes;
    if (name && entry.is_regular_file(error) && (bytes = ReadHostFile(entry.path()))) {
      printer.PutFile(std::string{device, ':'} + *name, std::move(*bytes));
    }
  }
}

void CMemoryFolder::LoadAttributes(CPrinter& printer) {
  for (const std::string& line : LinesOf(folder_ / kAttributesFile)) {
    if (const std::optional<std::string> name = PrinterFileName(line)) {
      printer.SetProtected(*name, true);
    }
  }
}

bool CMemoryFolder::SaveFile(char device, const std::string& name, const tagStoredFile* file) const {
  if (device == kVolatileDevice) {
    return true;
  }
  const fs::path path = folder_ / std::string(1, device) / HostFileName(name);
  if (file != nullptr) {
    return Write(path, file->bytes);
  }
  std::error_code error;
  fs::remove(path, error);
  return !error;
}

bool CMemoryFolder::SaveText(const std::string& text, std::string_view file, std::string& last_text) const {
  const fs::path path = folder_ / file;
  if (text != last_text) {
    if (!Write(path, Merged(last_text, text, path))) {
      return false;
    }
    last_text = text;
  }
  return true;
}

bool CMemoryFolder::Write(const fs::path& path, std::string_view bytes) const {
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  const fs::path temporary = folder_ / temporary_name_;
  std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) {
    fs::remove(temporary, error);
    return false;
  }
  // Windows replaces no file that another process is just reading.
  fs::rename(temporary, path, error);
  for (int i = 1; error && i < kRenameTries; ++i) {
    std::this_thread::sleep_for(kRenamePause);
    fs::rename(temporary, path, error);
  }
  if (error) {
    std::error_code ignored;
    fs::remove(temporary, ignored);
  }
  return !error;
}

}  // namespace lxemu
