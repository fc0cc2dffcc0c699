#include "library_file/library_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>

namespace tvmgr {
namespace {

// A Windows module: at 0x3C of its start the place of the PE header; then machine, number of sections, size
// of the optional header and flags; the optional header with the place of the export directory; the sections.
constexpr std::size_t kHeaderPlace = 0x3C;
constexpr std::size_t kMachine = 4;
constexpr std::size_t kSectionCount = 6;
constexpr std::size_t kOptionalSize = 20;
constexpr std::size_t kFlags = 22;
constexpr std::size_t kOptionalHeader = 24;
constexpr std::size_t kExportDirectory = kOptionalHeader + 112;
constexpr std::size_t kSectionSize = 40;

constexpr std::uint16_t kDllFlag = 0x2000;
constexpr std::uint16_t kMachineX86 = 0x014C;
constexpr std::uint16_t kMachineX64 = 0x8664;
constexpr std::uint16_t kMagic32 = 0x010B;
constexpr std::uint16_t kMagic64 = 0x020B;

// No module of any sense has more, and Windows loads none with more sections.
constexpr std::uint32_t kMaximumNames = 10'000;
constexpr std::uint32_t kMaximumSections = 96;

class CModuleImage {
 public:
  explicit CModuleImage(std::string_view bytes) : bytes_(bytes) {
    if (bytes_.starts_with("MZ")) {
      header_ = Number(kHeaderPlace, 4);
    }
  }

  bool IsModule() const {
    const std::string_view mark("PE\0\0", 4);
    return header_ && *header_ < bytes_.size() && bytes_.substr(*header_).starts_with(mark);
  }

  // 0 behind the end of the file.
  std::uint32_t Header(std::size_t offset, std::size_t size) const {
    return Number(*header_ + offset, size).value_or(0);
  }

  std::set<std::string, std::less<>> ExportedNames() const {
    std::set<std::string, std::less<>> names;
    const std::optional<std::size_t> directory = PlaceOf(Header(kExportDirectory, 4));
    if (!directory) {
      return names;
    }
    const std::uint32_t count = std::min(Number(*directory + 24, 4).value_or(0), kMaximumNames);
    const std::optional<std::size_t> table = PlaceOf(Number(*directory + 32, 4).value_or(0));
    for (std::uint32_t i = 0; table && i < count; ++i) {
      const std::optional<std::size_t> name = PlaceOf(Number(*table + 4 * std::size_t{i}, 4).value_or(0));
      if (!name) {
        break;
      }
      const std::string_view rest = bytes_.substr(*name, 256);
      names.emplace(rest.substr(0, rest.find('\0')));
    }
    return names;
  }

 private:
  // Little-endian.
  std::optional<std::uint32_t> Number(std::size_t offset, std::size_t size) const {
    if (offset > bytes_.size() || bytes_.size() - offset < size) {
      return std::nullopt;
    }
    std::uint32_t value = 0;
    for (std::size_t i = size; i-- > 0;) {
      value = value << 8 | static_cast<std::uint8_t>(bytes_[offset + i]);
    }
    return value;
  }

  // Where something lies in the file that the module, once loaded, has at this address.
  std::optional<std::size_t> PlaceOf(std::uint32_t address) const {
    const std::size_t sections = *header_ + kOptionalHeader + Header(kOptionalSize, 2);
    const std::uint32_t count = std::min(Header(kSectionCount, 2), kMaximumSections);
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t section = sections + i * kSectionSize;
      const std::uint32_t start = Number(section + 12, 4).value_or(0);
      const std::uint32_t size = Number(section + 16, 4).value_or(0);
      const std::size_t place = std::size_t{Number(section + 20, 4).value_or(0)} + (address - start);
      if (address >= start && address - start < size && place < bytes_.size()) {
        return address == 0 ? std::nullopt : std::optional(place);
      }
    }
    return std::nullopt;
  }

  std::string_view bytes_;
  std::optional<std::size_t> header_;
};

}  // namespace

tagLibraryFile InspectLibrary(std::string_view bytes, std::span<const char* const> entry_points) {
  const CModuleImage image(bytes);
  if (!image.IsModule()) {
    return {};
  }
  const std::uint32_t machine = image.Header(kMachine, 2);
  const std::uint32_t magic = image.Header(kOptionalHeader, 2);
  if ((image.Header(kFlags, 2) & kDllFlag) == 0) {
    return {};
  }
  if (machine == kMachineX86 || magic == kMagic32) {
    return {ELibraryFile::k32Bit, {}};
  }
  if (magic != kMagic64) {
    return {};
  }
  if (machine != kMachineX64) {
    return {ELibraryFile::kOtherMachine, {}};
  }
  const auto names = image.ExportedNames();
  tagLibraryFile file{ELibraryFile::kGood, {}};
  std::copy_if(entry_points.begin(), entry_points.end(), std::back_inserter(file.missing),
               [&](const char* name) { return !names.contains(std::string_view(name)); });
  if (!file.missing.empty()) {
    file.kind =
        file.missing.size() == entry_points.size() ? ELibraryFile::kOtherLibrary : ELibraryFile::kIncomplete;
  }
  return file;
}

std::string FileVersion(std::string_view bytes) {
  // In UTF-16, as it stands in front of the record; then the record: its mark, its own version, and twice two numbers.
  constexpr std::string_view kName("V\0S\0_\0V\0E\0R\0S\0I\0O\0N\0_\0I\0N\0F\0O\0", 30);
  constexpr std::string_view kMark("\xBD\x04\xEF\xFE\0\0\1\0", 8);
  constexpr std::size_t kRecord = 16;
  for (std::size_t at = bytes.find(kName); at != std::string_view::npos; at = bytes.find(kName, at + 1)) {
    const std::string_view near = bytes.substr(at + kName.size(), 8 + kRecord);
    const std::size_t record = near.find(kMark);
    if (record == std::string_view::npos || near.size() - record < kRecord) {
      continue;
    }
    std::string version;
    for (const std::size_t number : {10U, 8U, 14U, 12U}) {
      const auto low = static_cast<std::uint8_t>(near[record + number]);
      const auto high = static_cast<std::uint8_t>(near[record + number + 1]);
      version += (version.empty() ? "" : ".") + std::to_string(high << 8 | low);
    }
    return version;
  }
  return {};
}

bool IsMarkedAsDownload(std::string_view zone_identifier) {
  constexpr std::string_view kZone = "ZoneId=";
  const std::size_t at = zone_identifier.find(kZone);
  const std::string_view zone = at == std::string_view::npos ? "" : zone_identifier.substr(at + kZone.size());
  return zone.starts_with('3') || zone.starts_with('4');  // the internet, and sites that nobody trusts
}

}  // namespace tvmgr
