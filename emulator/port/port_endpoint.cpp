#include "emulator/port/port_endpoint.h"

#include <algorithm>
#include <utility>

namespace lxemu {

CPortEndpoint::CPortEndpoint(CPrinter& printer, MillisecondClock now)
    : printer_(printer), now_(std::move(now)) {}

std::int32_t CPortEndpoint::Initialize(const void* description) {
  if (description == nullptr) {
    return kPortNullPointer;
  }
  last_description_ = ReadPortDescription(description);
  std::int32_t code = kPortOk;
  if (FindCallFault(faults_, PortCall::kInitialize, code)) {
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
  if (FindCallFault(faults_, PortCall::kSendData, code)) {
    return code;
  }
  if (!is_open_) {
    return kPortNotOpen;
  }
  if (data == nullptr) {
    return kPortNullPointer;
  }
  tagExchange& exchange = exchanges_.emplace_back();
  std::string answer = RunExchange(printer_, faults_, {reinterpret_cast<const char*>(data), size}, exchange);
  bad_frame_count_ += exchange.is_framed ? 0 : 1;
  Answer(std::move(answer));
  return kPortOk;
}

std::int32_t CPortEndpoint::ReceiveData(std::uint8_t* buffer_or_null, std::uint32_t* size) {
  const bool is_poll = buffer_or_null == nullptr;
  ++(is_poll ? poll_count_ : read_count_);
  std::int32_t code = kPortOk;
  if (FindCallFault(faults_, is_poll ? PortCall::kPoll : PortCall::kRead, code)) {
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
  return which >= 1 && which <= 3 ? last_description_.strings[which - 1] : std::u16string();
}

void CPortEndpoint::Answer(std::string answer) {
  waiting_ = std::move(answer);
  read_position_ = 0;
  ready_at_ = now_() + faults_.latency_ms;
}

}  // namespace lxemu
