#include "discovery/search/answer_collection.h"

#include <algorithm>

namespace tavira {
namespace {

// How often the loop looks whether it was given up.
constexpr std::uint32_t kTurnMs = 100;
// Between two polls that fail.
constexpr std::uint32_t kPauseMs = 10;

}  // namespace

std::string DottedText(std::uint32_t address) {
  return std::to_string(address >> 24) + '.' + std::to_string(address >> 16 & 0xFF) + '.' +
         std::to_string(address >> 8 & 0xFF) + '.' + std::to_string(address & 0xFF);
}

CAnswerCollection::CAnswerCollection(const tagNetPlatform& platform, std::vector<std::uint32_t> addresses,
                                     std::uint16_t port)
    : platform_(platform), addresses_(std::move(addresses)), port_(port), found_(addresses_.size()) {}

std::vector<tagFoundPrinter> CAnswerCollection::Run(const std::atomic<bool>& given_up) {
  began_at_ = platform_.clock.TickCount();
  while (!given_up && platform_.clock.TickCount() - began_at_ < 2 * kAnswerTimeMs) {
    AskMore();
    if (asked_.empty()) {
      break;
    }
    WaitForAnswers();
  }
  asked_.clear();
  std::vector<tagFoundPrinter> found;
  for (const auto& printer : found_) {
    if (printer) {
      found.push_back(std::move(*printer));
    }
  }
  return found;
}

void CAnswerCollection::AskMore() {
  for (; next_ < addresses_.size(); ++next_) {
    auto printer = std::make_unique<tagAsked>(platform_, next_, port_);
    tagNetAddress whom{};
    whom.kind = 1;
    const std::string host = DottedText(addresses_[next_]);
    std::copy(host.begin(), host.end(), std::begin(whom.host));
    if (printer->driver.Open(whom) == kNetDone) {
      if (Ask(*printer, kSearchState)) {
        asked_.push_back(std::move(printer));
      }
    } else if (!asked_.empty()) {
      return;  // there are sockets again when some of these are done
    }
  }
}

bool CAnswerCollection::Ask(tagAsked& printer, std::uint32_t command) {
  printer.asked_at = platform_.clock.TickCount();
  return printer.driver.Ask(command) == kNetDone;
}

std::uint32_t CAnswerCollection::TimeLeft(const tagAsked& printer, std::uint32_t now) const {
  const std::uint32_t waited = now - printer.asked_at;
  return waited < kAnswerTimeMs ? kAnswerTimeMs - waited : 0;
}

void CAnswerCollection::WaitForAnswers() {
  std::vector<tagSocketPoll> polls;
  std::uint32_t wait_ms = kTurnMs;
  std::uint32_t now = platform_.clock.TickCount();
  for (const auto& printer : asked_) {
    polls.push_back({printer->connection.Socket()});
    wait_ms = std::min(wait_ms, TimeLeft(*printer, now));
  }
  if (platform_.sockets.Poll(polls, wait_ms) < 0) {
    platform_.clock.Sleep(kPauseMs);
  }
  now = platform_.clock.TickCount();
  for (std::size_t i = 0; i < polls.size(); ++i) {
    const bool goes_on = polls[i].is_readable ? GoesOn(*asked_[i]) : TimeLeft(*asked_[i], now) != 0;
    if (!goes_on) {
      asked_[i].reset();
    }
  }
  std::erase(asked_, nullptr);
}

/** Takes what has come; false when the printer has said all, or what it said will not do. */
bool CAnswerCollection::GoesOn(tagAsked& printer) {
  const std::uint32_t result = printer.driver.Take();
  if (result != kNetDone) {
    return result == kNetNothingReceived && TimeLeft(printer, platform_.clock.TickCount()) != 0;
  }
  if (!printer.is_at_names) {
    printer.is_at_names = true;
    return Ask(printer, kSearchNames);
  }
  const tagPrinterNames names = ReadPrinterNames(printer.driver.Answer());
  auto found = std::make_unique<tagFoundPrinter>();
  found->kind = TVMGR_SEARCH_NETWORK;
  found->text1 = platform_.text.FromAnsi(names.first);
  found->text2 = platform_.text.FromAnsi(names.second);
  found->text5 = WidenAscii(DottedText(addresses_[printer.place]));
  found_[printer.place] = std::move(found);
  return false;
}

}  // namespace tavira
