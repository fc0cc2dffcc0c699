#include "backup_file/stored_download.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace tvmgr {
namespace {

constexpr std::string_view kObjectCommand = "~DY";
constexpr std::string_view kFormatCommand = "^DF";
constexpr std::string_view kFormatEnd = "^XZ";
constexpr std::string_view kPlainMarker = ":B64:";
constexpr std::string_view kCompressedMarker = ":Z64:";
constexpr std::size_t kObjectFields = 5;
// What a printer puts in front of a command, or between its name and its data, is short.
constexpr std::size_t kLongestHead = 256;
constexpr std::size_t kLongestTail = 64;

bool IsBase64Character(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
}

// A checksum that is not there, or is none, does not keep the printer from taking the data.
bool HasWrongChecksum(std::string_view base64, std::string_view behind) {
  constexpr std::size_t kDigits = 4;
  if (behind.size() <= kDigits || behind.front() != ':') {
    return false;
  }
  unsigned int stated = 0;
  const char* const begin = behind.data() + 1;
  const auto [end, error] = std::from_chars(begin, begin + kDigits, stated, 16);
  return error == std::errc() && end == begin + kDigits && stated != DownloadChecksum(base64);
}

std::string_view EncodedProblem(std::string_view data, std::uint64_t stored_bytes) {
  const bool is_plain = data.starts_with(kPlainMarker);
  data.remove_prefix(kPlainMarker.size());
  const std::size_t size = std::min(data.find(':'), data.size());
  const std::string_view base64 = data.substr(0, size);
  if (is_plain) {
    const auto characters =
        static_cast<std::uint64_t>(std::count_if(base64.begin(), base64.end(), IsBase64Character));
    if (characters * 3 / 4 < stored_bytes) {
      return "its data is cut off";
    }
  }
  return HasWrongChecksum(base64, data.substr(size)) ? "its data does not match its checksum" : "";
}

std::string_view ObjectProblem(std::string_view data, std::uint64_t stored_bytes) {
  if (data.starts_with(kPlainMarker) || data.starts_with(kCompressedMarker)) {
    return EncodedProblem(data, stored_bytes);
  }
  return data.size() < stored_bytes ? "its data is cut off" : "";
}

}  // namespace

std::uint16_t DownloadChecksum(std::string_view text) {
  static constexpr auto kTable = [] {
    std::array<std::uint16_t, 256> table{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
      std::uint32_t value = byte << 8;
      for (int bit = 0; bit < 8; ++bit) {
        value = (value & 0x8000U) != 0 ? value << 1 ^ 0x1021U : value << 1;
      }
      table[byte] = static_cast<std::uint16_t>(value);
    }
    return table;
  }();
  std::uint16_t crc = 0;
  for (const char c : text) {
    const auto index = static_cast<std::uint8_t>(crc >> 8 ^ static_cast<unsigned char>(c));
    crc = static_cast<std::uint16_t>(crc << 8 ^ kTable[index]);
  }
  return crc;
}

std::optional<tagObjectHead> ReadObjectHead(std::string_view command) {
  const std::size_t at = command.substr(0, kLongestHead).find(kObjectCommand);
  if (at == std::string_view::npos) {
    return std::nullopt;
  }
  tagObjectHead head{0, at + kObjectCommand.size()};
  for (std::size_t field = 0; field < kObjectFields; ++field) {
    const std::string_view rest = command.substr(head.data_begin, kLongestHead);
    const std::size_t size = rest.find(',');
    if (size == std::string_view::npos) {
      return std::nullopt;
    }
    if (field == 3) {
      const auto [end, error] = std::from_chars(rest.data(), rest.data() + size, head.stored_bytes);
      if (error != std::errc() || end != rest.data() + size) {
        return std::nullopt;
      }
    }
    head.data_begin += size + 1;
  }
  return head;
}

tagStoredDownload ReadStoredDownload(std::string_view command) {
  if (const std::optional<tagObjectHead> head = ReadObjectHead(command)) {
    return {head->stored_bytes, ObjectProblem(command.substr(head->data_begin), head->stored_bytes)};
  }
  if (command.substr(0, kLongestHead).find(kFormatCommand) == std::string_view::npos) {
    return {std::nullopt, "its data is no download command"};
  }
  const std::string_view tail = command.substr(command.size() - std::min(command.size(), kLongestTail));
  const bool is_whole = tail.find(kFormatEnd) != std::string_view::npos;
  return {std::nullopt, is_whole ? "" : "its data is cut off"};
}

}  // namespace tvmgr
