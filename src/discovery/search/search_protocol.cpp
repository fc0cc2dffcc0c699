#include "discovery/search/search_protocol.h"

#include <algorithm>

namespace tavira {
namespace {

constexpr std::string_view kBroadcastHead = "KORVAP";
constexpr std::string_view kAnnouncementHead = "KORVAp";
constexpr std::string_view kRequestHead = "KORVAQ";
constexpr std::string_view kAnswerHead = "KORVAq";

constexpr std::size_t kRequestSize = 14;
constexpr std::size_t kTargetedRequestSize = 20;
constexpr std::size_t kCommandOffset = 6;
constexpr std::size_t kDetailOffset = 7;
constexpr std::size_t kStatusOffset = 10;
constexpr std::size_t kLengthOffset = 12;
constexpr std::size_t kMacLengthOffset = 13;
constexpr std::size_t kMacOffset = 14;
constexpr std::size_t kNamesOffset = 16;
constexpr std::size_t kCapabilityOffset = 72;

constexpr std::uint32_t kAnnouncementStatus = 0xE000;
constexpr std::uint32_t kSearchCapability = 2;
constexpr std::size_t kMaxNames = 493;

constexpr std::uint32_t kMarkedBits = 0xC0000000;
constexpr std::uint32_t kMark = 0x00800000;
constexpr std::uint32_t kDetailedCommand = 0x02000001;
constexpr std::uint32_t kAddressCommand = 16;  // its answer carries the address one byte further
constexpr std::uint32_t kAddressedCommands[] = {16,      256,      257,      258,      0x20001,
                                                0x40000, 0x8A1000, 0x8A1001, 0xCA1001, 0xCB1000};

/** A big-endian number; none where the datagram ends before it does. */
std::optional<std::uint32_t> ReadNumber(std::string_view datagram, std::size_t offset, std::size_t size) {
  if (datagram.size() < offset + size) {
    return std::nullopt;
  }
  std::uint32_t number = 0;
  for (const char byte : datagram.substr(offset, size)) {
    number = number << 8 | static_cast<std::uint8_t>(byte);
  }
  return number;
}

bool IsGoodStatus(std::uint32_t status) {
  return status != 0x0100 && (status < 0x1000 || (status >= 0xE000 && status < 0xF000));
}

bool MustNameTarget(std::uint32_t command, bool has_target) {
  return (command == kSearchState && has_target) ||
         std::find(std::begin(kAddressedCommands), std::end(kAddressedCommands), command) !=
             std::end(kAddressedCommands);
}

bool NamesTarget(std::string_view datagram, std::uint32_t command, const MacAddress& target) {
  const std::size_t offset = command == kAddressCommand ? kMacOffset + 1 : kMacOffset;
  return datagram.size() >= offset + target.size() &&
         std::equal(
             target.begin(), target.end(), datagram.begin() + static_cast<std::ptrdiff_t>(offset),
             [](std::uint8_t expected, char byte) { return expected == static_cast<std::uint8_t>(byte); });
}

int DigitValue(char digit) {
  if (digit >= '0' && digit <= '9') {
    return digit - '0';
  }
  const char lower = static_cast<char>(digit | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/** The text in front of the first zero byte, which leaves `rest` together with that byte. */
std::string_view TakeText(std::string_view& rest) {
  const std::string_view text = rest.substr(0, rest.find('\0'));
  rest.remove_prefix(std::min(rest.size(), text.size() + 1));
  return text;
}

}  // namespace

std::optional<MacAddress> ParseMac(std::string_view text) {
  MacAddress mac{};
  if (text.size() != 2 * mac.size()) {
    return std::nullopt;
  }
  for (std::size_t i = 0; i < mac.size(); ++i) {
    const int high = DigitValue(text[2 * i]);
    const int low = DigitValue(text[2 * i + 1]);
    if (high < 0 || low < 0) {
      return std::nullopt;
    }
    mac[i] = static_cast<std::uint8_t>(high * 16 + low);
  }
  return mac;
}

std::string BuildBroadcast() {
  std::string datagram(kBroadcastHead);
  datagram.resize(kRequestSize);
  return datagram;
}

std::string BuildSearchRequest(std::uint32_t command, const MacAddress& target) {
  const bool is_targeted = (command & kSearchTargeted) != 0;
  if ((command & kMarkedBits) == kMarkedBits) {
    command |= kMark;
  }
  std::string datagram(kRequestHead);
  datagram.resize(is_targeted ? kTargetedRequestSize : kRequestSize);
  for (std::size_t i = 0; i < 4; ++i) {
    datagram[kCommandOffset + i] = static_cast<char>(command >> (24 - 8 * i) & 0xFF);
  }
  if (is_targeted) {
    datagram[kMacLengthOffset] = static_cast<char>(target.size());
    std::copy(target.begin(), target.end(), datagram.begin() + kMacOffset);
  }
  return datagram;
}

bool IsAnnouncement(std::string_view datagram) {
  // One that ends before its capabilities offers none.
  const std::optional<std::uint32_t> capabilities = ReadNumber(datagram, kCapabilityOffset, 4);
  return capabilities && (*capabilities & kSearchCapability) != 0 &&
         datagram.starts_with(kAnnouncementHead) && datagram[kCommandOffset] == 0 &&
         ReadNumber(datagram, 8, 2) == 0U && ReadNumber(datagram, kStatusOffset, 2) == kAnnouncementStatus;
}

bool IsGoodAnswer(std::string_view datagram, std::uint32_t command, const std::optional<MacAddress>& target) {
  const std::optional<std::uint32_t> status = ReadNumber(datagram, kStatusOffset, 2);
  if (!status || !datagram.starts_with(kAnswerHead) || !IsGoodStatus(*status)) {
    return false;
  }
  if (command == kDetailedCommand && datagram[kDetailOffset] != 0) {
    return false;
  }
  return !MustNameTarget(command, target.has_value()) ||
         NamesTarget(datagram, command, target.value_or(MacAddress{}));
}

tagPrinterNames ReadPrinterNames(std::string_view datagram) {
  const std::uint32_t length = ReadNumber(datagram, kLengthOffset, 2).value_or(0);
  if (length < 2 || datagram.size() < kNamesOffset) {
    return {};
  }
  std::string_view block = datagram.substr(kNamesOffset, std::min<std::size_t>(length - 2, kMaxNames));
  const std::string_view first = TakeText(block);
  return {first, TakeText(block)};
}

}  // namespace tavira
