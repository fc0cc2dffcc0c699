#include "emulator/network/search_answer.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace lxemu {
namespace {

// All numbers are big-endian. A datagram begins with the maker word and a letter: small in answers, capital
// in questions. Questions: the command at 6; for one printer only, its hardware address, with the length in
// front of it. Answers: the command, or zeros in an announcement, at 6, the status at 10, the number of bytes
// from offset 14 on at 12, then the data.
constexpr std::string_view kMakerWord = "KORVA";
constexpr char kBroadcastLetter = 'P';
constexpr char kRequestLetter = 'Q';
constexpr std::size_t kLetterOffset = 5;
constexpr std::size_t kCommandOffset = 6;
constexpr std::size_t kStatusOffset = 10;
constexpr std::size_t kDataOffset = 14;
constexpr std::size_t kHeaderSize = 14;
constexpr std::size_t kCapabilityOffset = 72;
constexpr std::size_t kAnnouncementSize = 76;

constexpr std::uint32_t kForOnePrinter = 0x80000000;
constexpr std::uint32_t kStateCommand = 0;
constexpr std::uint32_t kNamesCommand = 0x02000000;

constexpr std::uint16_t kStatusDone = 0;
constexpr std::uint16_t kStatusAnnouncement = 0xE000;
constexpr std::uint16_t kStatusRefused = 0x0100;
constexpr std::uint32_t kCapabilitySearch = 2;

// Shorter than any host can use: an announcement without capabilities, an answer that ends before its status,
// names that end within the first one.
constexpr std::size_t kShortAnnouncement = 40;
constexpr std::size_t kShortState = 10;
constexpr std::size_t kShortNames = 19;

// Together with their ends they stay within what one datagram's length field and any host's buffer hold.
constexpr std::size_t kMaximumName = 240;

std::string Number(std::uint32_t value, std::size_t bytes) {
  std::string text;
  for (std::size_t i = bytes; i-- > 0;) {
    text += static_cast<char>(value >> (8 * i) & 255);
  }
  return text;
}

std::uint32_t Number32(std::string_view datagram, std::size_t offset) {
  std::uint32_t value = 0;
  for (const char byte : datagram.substr(offset, 4)) {
    value = value << 8 | static_cast<std::uint8_t>(byte);
  }
  return value;
}

std::string Answer(char question, std::uint32_t command, std::uint16_t status, std::string_view data) {
  const char letter = static_cast<char>(question - 'A' + 'a');
  return std::string(kMakerWord) + letter + Number(command, 4) + Number(status, 2) +
         Number(static_cast<std::uint32_t>(data.size()), 2) + std::string(data);
}

std::string MacText(const tagSearchIdentity& identity) {
  return {identity.mac.begin(), identity.mac.end()};
}

std::string Announcement(const tagSearchIdentity& identity, const tagSearchPlan& plan) {
  std::string data = MacText(identity);
  data.resize(kCapabilityOffset - kDataOffset, '\0');
  data += Number(plan.no_capability ? 0 : kCapabilitySearch, 4);
  std::string answer = Answer(kBroadcastLetter, 0, kStatusAnnouncement, data);
  static_assert(kAnnouncementSize == kCapabilityOffset + 4);
  return answer;
}

std::string Names(const tagSearchIdentity& identity, const tagSearchPlan& plan) {
  const std::string& first = plan.first_name.empty() ? identity.model : plan.first_name;
  const std::string& second = plan.second_name.empty() ? identity.name : plan.second_name;
  std::string block(2, '\0');
  block.append(first.substr(0, kMaximumName)).append(1, '\0');
  block.append(second.substr(0, kMaximumName)).append(1, '\0');
  return block;
}

// None when the request is not for this printer.
std::optional<std::uint32_t> CommandFor(std::string_view request, const tagSearchIdentity& identity) {
  const std::uint32_t command = Number32(request, kCommandOffset);
  if ((command & kForOnePrinter) == 0) {
    return command;
  }
  if (request.substr(kDataOffset, identity.mac.size()) != MacText(identity)) {
    return std::nullopt;
  }
  return command & ~kForOnePrinter;
}

std::vector<tagSearchAnswer> WithFaults(std::string answer, SearchMessage message, std::size_t short_size,
                                        const tagSearchPlan& plan) {
  if (plan.silent.Has(message)) {
    return {};
  }
  if (plan.wrong_letter.Has(message)) {
    answer[kLetterOffset] = 'x';
  }
  if (plan.rejected.Has(message)) {
    answer.replace(kStatusOffset, 2, Number(kStatusRefused, 2));
  }
  if (plan.cut_short.Has(message)) {
    answer.resize(std::min(answer.size(), short_size));
  }
  const std::uint32_t after_ms = plan.delay_ms + plan.late.Of(message);
  std::vector<tagSearchAnswer> answers(plan.twice.Has(message) ? 2 : 1,
                                       {std::move(answer), plan.other_port.Has(message), after_ms});
  if (const std::uint32_t again_ms = plan.again.Of(message); again_ms > 0) {
    answers.push_back({answers.front().bytes, answers.front().from_other_port, after_ms + again_ms});
  }
  return answers;
}

}  // namespace

bool IsSearchBroadcast(std::string_view datagram) {
  return datagram.size() >= kHeaderSize && datagram.starts_with(kMakerWord) &&
         datagram[kLetterOffset] == kBroadcastLetter &&
         datagram.substr(kCommandOffset, kHeaderSize - kCommandOffset).find_first_not_of('\0') ==
             std::string_view::npos;
}

std::vector<tagSearchAnswer> AnswerSearch(std::string_view datagram, const tagSearchIdentity& identity,
                                          const tagSearchPlan& plan) {
  if (IsSearchBroadcast(datagram)) {
    return WithFaults(Announcement(identity, plan), SearchMessage::kAnnouncement, kShortAnnouncement, plan);
  }
  if (datagram.size() < kHeaderSize || !datagram.starts_with(kMakerWord) ||
      datagram[kLetterOffset] != kRequestLetter) {
    return {};
  }
  const std::optional<std::uint32_t> command = CommandFor(datagram, identity);
  if (!command) {
    return {};
  }
  const std::uint32_t echoed = Number32(datagram, kCommandOffset);
  if (*command == kStateCommand) {
    return WithFaults(Answer(kRequestLetter, echoed, kStatusDone, MacText(identity)), SearchMessage::kState,
                      kShortState, plan);
  }
  if (*command == kNamesCommand) {
    return WithFaults(Answer(kRequestLetter, echoed, kStatusDone, Names(identity, plan)),
                      SearchMessage::kNames, kShortNames, plan);
  }
  return {{Answer(kRequestLetter, echoed, kStatusRefused, {}), false, plan.delay_ms}};
}

}  // namespace lxemu
