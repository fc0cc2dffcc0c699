#include "transcript/replay.h"

#include <algorithm>
#include <limits>

#include "transcript/escape.h"

namespace recorder {
namespace {

bool IsPoll(const tagCall& call) {
  return call.kind == CallKind::kReceiveData && !call.has_buffer;
}

bool IsEmptyPoll(const tagCall& call) {
  return IsPoll(call) && call.is_finished && call.result == 0 && call.count == 0U;
}

// A few bytes around the place that matters.
std::string Excerpt(std::string_view bytes, std::size_t place) {
  constexpr std::size_t kBefore = 12;
  constexpr std::size_t kShown = 36;
  const std::size_t start = place - std::min(place, kBefore);
  std::string text = start > 0 ? "...\"" : "\"";
  for (const char byte : bytes.substr(std::min(start, bytes.size()), kShown)) {
    char escape[kLongestEscape];
    text.append(escape, EscapeByte(byte, escape));
  }
  return text + (bytes.size() > start + kShown ? "\"..." : "\"");
}

std::string DescribeDifference(std::string_view expected, std::string_view sent) {
  const auto [left, right] = std::mismatch(expected.begin(), expected.end(), sent.begin(), sent.end());
  const auto place = static_cast<std::size_t>(left - expected.begin());
  return "expected SendData of " + std::to_string(expected.size()) + " bytes, the host sends " +
         std::to_string(sent.size()) + "; different from byte " + std::to_string(place) + " on: expected " +
         Excerpt(expected, place) + ", sent " + Excerpt(sent, place);
}

std::string_view ViewOf(const std::uint8_t* bytes_or_null, std::uint32_t size) {
  return bytes_or_null == nullptr ? std::string_view()
                                  : std::string_view(reinterpret_cast<const char*>(bytes_or_null), size);
}

}  // namespace

std::int32_t FailureAt(std::size_t line) {
  constexpr std::size_t kMost = 2'000'000'000;
  return kRecorderFailure - static_cast<std::int32_t>(std::min(line, kMost));
}

CReplay::CReplay(tagTranscript transcript, ReplayOrder order)
    : transcript_(std::move(transcript)), order_(order), is_played_(transcript_.calls.size()) {}

std::int32_t CReplay::Initialize() {
  if (order_ == ReplayOrder::kByCommand) {
    answer_.clear();
    // The port opens, unless it never did.
    std::int32_t result = 0;
    for (const tagCall& call : transcript_.calls) {
      if (call.kind == CallKind::kInitialize && call.is_finished) {
        result = call.result;
        if (result == 0) {
          break;
        }
      }
    }
    return result;
  }
  std::int32_t code = 0;
  const tagCall* call = Expect(CallKind::kInitialize, code);
  return call == nullptr ? code : call->result;
}

std::int32_t CReplay::Terminate() {
  if (order_ == ReplayOrder::kByCommand) {
    answer_.clear();
    return 0;
  }
  std::int32_t code = 0;
  const tagCall* call = Expect(CallKind::kTerminate, code);
  return call == nullptr ? code : call->result;
}

std::int32_t CReplay::SendData(const std::uint8_t* bytes_or_null, std::uint32_t size) {
  const std::string_view sent = ViewOf(bytes_or_null, size);
  if (order_ == ReplayOrder::kByCommand) {
    return SendByCommand(sent);
  }
  PassEmptyPolls();
  if (const tagCall* next = Peek();
      next != nullptr && failure_.empty() && next->kind == CallKind::kSendData &&
      (next->bytes.has_value() != (bytes_or_null != nullptr) || next->bytes.value_or("") != sent)) {
    return Fail(next->line, DescribeDifference(next->bytes ? std::string_view(*next->bytes) : "", sent));
  }
  std::int32_t code = 0;
  const tagCall* call = Expect(CallKind::kSendData, code);
  return call == nullptr ? code : call->result;
}

std::int32_t CReplay::ReceiveData(std::uint8_t* buffer_or_null, std::uint32_t* count_or_null) {
  std::uint32_t ignored = 0;
  std::uint32_t& count = count_or_null == nullptr ? ignored : *count_or_null;
  if (order_ == ReplayOrder::kByCommand) {
    return ReceiveByCommand(buffer_or_null, count);
  }
  return buffer_or_null == nullptr ? Poll(count) : Read(buffer_or_null, count);
}

std::int32_t CReplay::CallUnseen(CallKind kind) {
  std::int32_t code = 0;
  if (order_ == ReplayOrder::kStrict) {
    Expect(kind, code);
  }
  return code;
}

bool CReplay::IsComplete() const {
  return order_ == ReplayOrder::kStrict && failure_.empty() &&
         std::all_of(transcript_.calls.begin() + static_cast<std::ptrdiff_t>(position_),
                     transcript_.calls.end(), IsEmptyPoll);
}

std::string CReplay::Report() const {
  if (!failure_.empty()) {
    return "failed: " + failure_;
  }
  if (order_ == ReplayOrder::kByCommand) {
    return "played " + std::to_string(played_) + " commands";
  }
  if (!IsComplete()) {
    return "not complete: the host ended where line " + std::to_string(ExpectedLine()) + " is expected";
  }
  return "complete: " + std::to_string(played_) + " calls" +
         (transcript_.has_end ? "" : "; the recording was broken off there");
}

std::int32_t CReplay::Fail(std::size_t line, const std::string& reason) {
  if (failure_.empty()) {
    failure_ = (line == 0 ? "" : "line " + std::to_string(line) + ": ") + reason;
    failure_code_ = FailureAt(line);
  }
  return order_ == ReplayOrder::kStrict ? failure_code_ : FailureAt(line);
}

const tagCall* CReplay::Peek() const {
  return position_ < transcript_.calls.size() ? &transcript_.calls[position_] : nullptr;
}

std::size_t CReplay::ExpectedLine() const {
  const tagCall* next = Peek();
  return next == nullptr ? transcript_.line_count + 1 : next->line;
}

// How often a host asks before there is something depends on the clock alone.
void CReplay::PassEmptyPolls() {
  while (failure_.empty() && Peek() != nullptr && IsEmptyPoll(*Peek())) {
    ++position_;
  }
}

// The call that comes next, passed over; null, and the code to return, when it is not of this kind or cannot be
// played.
const tagCall* CReplay::Expect(CallKind kind, std::int32_t& code) {
  PassEmptyPolls();
  const tagCall* next = Peek();
  const std::string called = ", the host calls " + std::string(CallName(kind));
  if (!failure_.empty()) {
    code = failure_code_;
  } else if (next == nullptr) {
    code = Fail(ExpectedLine(), "the transcript ends here" + called);
  } else if (next->kind == CallKind::kLost) {
    code = Fail(next->line, std::to_string(next->lost) + " calls are missing here");
  } else if (next->kind != kind) {
    code = Fail(next->line, "expected " + std::string(CallName(next->kind)) + called);
  } else if (!next->is_finished) {
    code = Fail(next->line, std::string(CallName(kind)) + " never came back here");
  } else {
    ++position_;
    ++played_;
    is_waiting_ = false;
    return next;
  }
  return nullptr;
}

std::int32_t CReplay::Poll(std::uint32_t& count) {
  const tagCall* next = Peek();
  if (failure_.empty() && next != nullptr && IsEmptyPoll(*next)) {
    ++position_;
    ++played_;
    is_waiting_ = true;
    count = 0;
    return 0;
  }
  if (failure_.empty() && is_waiting_ && (next == nullptr || !IsPoll(*next))) {
    count = 0;  // it waits longer here than it did there
    return 0;
  }
  if (failure_.empty() && next != nullptr && next->kind == CallKind::kReceiveData && next->has_buffer) {
    return Fail(next->line, "expected ReceiveData with a buffer, the host calls it without one");
  }
  std::int32_t code = 0;
  const tagCall* call = Expect(CallKind::kReceiveData, code);
  if (call == nullptr) {
    return code;
  }
  count = call->count.value_or(count);
  return call->result;
}

std::int32_t CReplay::Read(std::uint8_t* buffer, std::uint32_t& count) {
  PassEmptyPolls();
  if (const tagCall* next = Peek(); failure_.empty() && next != nullptr &&
                                    next->kind == CallKind::kReceiveData &&
                                    (!next->has_buffer || next->room.value_or(count) != count)) {
    return Fail(next->line, "expected ReceiveData " +
                                (next->has_buffer ? "of " + std::to_string(*next->room) + " bytes"
                                                  : std::string("without a buffer")) +
                                ", the host calls it with room for " + std::to_string(count));
  }
  std::int32_t code = 0;
  const tagCall* call = Expect(CallKind::kReceiveData, code);
  if (call == nullptr) {
    return code;
  }
  if (call->bytes) {
    std::copy_n(call->bytes->begin(), std::min<std::size_t>(call->bytes->size(), count), buffer);
  }
  count = call->count.value_or(count);
  return call->result;
}

std::int32_t CReplay::SendByCommand(std::string_view sent) {
  std::vector<tagCall>& calls = transcript_.calls;
  // The first one that was not played yet; when all were, the last one again.
  std::size_t found = calls.size();
  for (std::size_t i = 0; i < calls.size(); ++i) {
    if (calls[i].kind == CallKind::kSendData && calls[i].is_finished && calls[i].bytes.value_or("") == sent) {
      found = i;
      if (!is_played_[i]) {
        break;
      }
    }
  }
  answer_.clear();
  answer_start_ = 0;
  poll_code_ = read_code_ = 0;
  if (found == calls.size()) {
    return Fail(0, "no line sends " + Excerpt(sent, 0) + " (" + std::to_string(sent.size()) + " bytes)");
  }
  is_played_[found] = true;
  ++played_;
  for (std::size_t i = found + 1; i < calls.size() && calls[i].kind == CallKind::kReceiveData; ++i) {
    const tagCall& call = calls[i];
    answer_ += call.bytes.value_or("");
    (call.has_buffer ? read_code_ : poll_code_) = call.result;
  }
  return calls[found].result;
}

std::int32_t CReplay::ReceiveByCommand(std::uint8_t* buffer_or_null, std::uint32_t& count) {
  // Cleared by another command, the port's opening or closing.
  const std::string_view waiting = std::string_view(answer_).substr(std::min(answer_start_, answer_.size()));
  if (buffer_or_null == nullptr) {
    count = poll_code_ == 0 ? static_cast<std::uint32_t>(waiting.size()) : count;
    return poll_code_;
  }
  if (read_code_ == 0) {
    count = static_cast<std::uint32_t>(waiting.copy(reinterpret_cast<char*>(buffer_or_null), count));
    answer_start_ += count;
  }
  return read_code_;
}

}  // namespace recorder
