#include "port_endpoint.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace lxemu {
namespace {

constexpr std::string_view kFrameStart = "\x10\x1B\x1D\x1B\x1B";
constexpr std::string_view kFrameEnd = "\x10\x1B\x1D\x1B\x1C";

constexpr std::size_t kStringOffset = 8;
constexpr std::size_t kDataOffset = 32;
constexpr std::size_t kDataSize = 16;
constexpr std::size_t kDataUsedOffset = 48;

template <typename T>
T ReadAt(const void* record, std::size_t offset) {
  T value;
  std::memcpy(&value, static_cast<const char*>(record) + offset, sizeof value);
  return value;
}

}  // namespace

std::string_view UnwrapFrame(std::string_view frame) {
  if (frame.size() < kFrameStart.size() + kFrameEnd.size() || !frame.starts_with(kFrameStart) ||
      !frame.ends_with(kFrameEnd)) {
    return {};
  }
  return frame.substr(kFrameStart.size(), frame.size() - kFrameStart.size() - kFrameEnd.size());
}

CPortEndpoint::CPortEndpoint(CPrinter& printer, MillisecondClock now)
    : printer_(printer), now_(std::move(now)) {}

std::int32_t CPortEndpoint::Initialize(const void* description) {
  if (description == nullptr) {
    return kPortNullPointer;
  }
  RecordDescription(description);
  std::int32_t code = kPortOk;
  if (FindFault(PortCall::kInitialize, code)) {
    return code;
  }
  if (is_open_) {
    return kPortAlreadyOpen;
  }
  is_open_ = true;
  ++open_count_;
  return kPortOk;
}

std::int32_t CPortEndpoint::Terminate() {
  ++terminate_count_;
  if (!is_open_) {
    return kPortNotOpen;
  }
  is_open_ = false;
  ++close_count_;
  Answer({});
  return kPortOk;
}

std::int32_t CPortEndpoint::SendData(const std::uint8_t* data, std::uint32_t size) {
  ++send_count_;
  std::int32_t code = kPortOk;
  if (FindFault(PortCall::kSendData, code)) {
    return code;
  }
  if (!is_open_) {
    return kPortNotOpen;
  }
  if (data == nullptr) {
    return kPortNullPointer;
  }
  ++faults_.sends_seen;
  const std::string_view raw(reinterpret_cast<const char*>(data), size);
  const std::string_view commands = UnwrapFrame(raw);
  const bool is_framed = commands.data() != nullptr;
  bad_frame_count_ += is_framed ? 0 : 1;
  const std::string_view sent = is_framed ? commands : raw;
  exchanges_.push_back({std::string(sent.substr(0, kMaximumLogged)), {}, sent.size(), 0});
  std::string answer = printer_.Execute(commands);
  const bool is_silent =
      faults_.silent || (faults_.silent_from != 0 && faults_.sends_seen >= faults_.silent_from);
  if (is_silent) {
    answer.clear();
  } else if (faults_.cut_answer_at && answer.size() > *faults_.cut_answer_at) {
    answer.resize(*faults_.cut_answer_at);
  }
  exchanges_.back().answer = answer.substr(0, kMaximumLogged);
  exchanges_.back().answer_bytes = answer.size();
  Answer(std::move(answer));
  return kPortOk;
}

std::int32_t CPortEndpoint::ReceiveData(std::uint8_t* buffer_or_null, std::uint32_t* size) {
  const bool is_poll = buffer_or_null == nullptr;
  ++(is_poll ? poll_count_ : read_count_);
  std::int32_t code = kPortOk;
  if (FindFault(is_poll ? PortCall::kPoll : PortCall::kRead, code)) {
    return code;
  }
  if (!is_open_) {
    return kPortNotOpen;
  }
  if (size == nullptr) {
    return kPortNullPointer;
  }
  // Answers stay below 1 GiB, so the count fits.
  const std::size_t waiting = now_() < ready_at_ ? 0 : waiting_.size() - read_position_;
  if (is_poll) {
    *size = static_cast<std::uint32_t>(waiting);
    return kPortOk;
  }
  *size = static_cast<std::uint32_t>(std::min<std::size_t>(*size, waiting));
  waiting_.copy(reinterpret_cast<char*>(buffer_or_null), *size, read_position_);
  read_position_ += *size;
  if (read_position_ == waiting_.size()) {
    Answer({});
  }
  return kPortOk;
}

std::int32_t CPortEndpoint::ClearReceiveData() {
  if (!is_open_) {
    return kPortNotOpen;
  }
  Answer({});
  return kPortOk;
}

std::u16string CPortEndpoint::LastString(int which) const {
  return which >= 1 && which <= 3 ? last_strings_[which - 1] : std::u16string();
}

bool CPortEndpoint::FindFault(PortCall call, std::int32_t& code) {
  bool found = false;
  for (tagCallFault& fault : faults_.call_faults) {
    if (fault.call == call && ++fault.seen == fault.nth) {
      code = fault.code;
      found = true;
    }
  }
  return found;
}

void CPortEndpoint::RecordDescription(const void* description) {
  last_port_type_ = ReadAt<std::int32_t>(description, 0);
  for (std::size_t i = 0; i < 3; ++i) {
    const auto* text = ReadAt<const char16_t*>(description, kStringOffset + i * sizeof(void*));
    last_strings_[i] = text == nullptr ? std::u16string() : std::u16string(text);
  }
  const auto used = ReadAt<std::int32_t>(description, kDataUsedOffset);
  const auto length = static_cast<std::size_t>(std::clamp<std::int32_t>(used, 0, kDataSize));
  last_data_.assign(static_cast<const char*>(description) + kDataOffset, length);
}

void CPortEndpoint::Answer(std::string answer) {
  waiting_ = std::move(answer);
  read_position_ = 0;
  ready_at_ = now_() + faults_.latency_ms;
}

}  // namespace lxemu
