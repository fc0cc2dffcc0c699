#include "emulator/network/client_connection.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace lxemu {

std::optional<tagSocketWait> CClientConnection::Wait() const {
  if (is_over_ || delayed_) {
    return outgoing_.empty() ? std::nullopt : std::optional(tagSocketWait{&socket_, false, true});
  }
  const bool has_output = !outgoing_.empty();
  return tagSocketWait{&socket_, !has_output, has_output};
}

std::optional<std::uint64_t> CClientConnection::DueTime() const {
  return delayed_ && outgoing_.empty() ? std::optional(delayed_->due) : std::nullopt;
}

void CClientConnection::Receive(std::span<char> buffer) {
  const tagTransfer received = socket_.Receive(buffer);
  if (received.result == SocketResult::kDone) {
    requests_.Append({buffer.data(), received.size});
  } else if (received.result != SocketResult::kWouldBlock) {
    // A peer that is gone can still have left whole requests.
    is_input_over_ = true;
  }
}

void CClientConnection::Work(std::uint64_t now) {
  while (!is_over_ && Flush()) {
    if (hangs_up_) {
      is_over_ = true;
    } else if (delayed_) {
      if (now < delayed_->due) {
        return;
      }
      outgoing_ = std::move(delayed_->bytes);
      hangs_up_ = delayed_->hangs_up;
      delayed_.reset();
    } else if (const std::optional<tagRequest> request = requests_.Next()) {
      Run(*request, now);
    } else {
      is_over_ = is_input_over_ || requests_.IsBroken();
      return;
    }
  }
}

void CClientConnection::Run(const tagRequest& request, std::uint64_t now) {
  tagOutcome outcome = runner_(request.bytes);
  if (request.number) {
    outgoing_ = RecordHeader({RecordKind::kTaken, *request.number, 0});
  }
  if (outcome.answer.empty()) {
    return;
  }
  std::string header;
  if (request.number) {
    const auto length = static_cast<std::uint32_t>(outcome.answer.size());
    header = RecordHeader({RecordKind::kAnswer, *request.number, length});
  }
  if (outcome.hang_up_at) {
    outcome.answer.resize(std::min(outcome.answer.size(), *outcome.hang_up_at));
  }
  delayed_ = {now + outcome.latency_ms, std::move(header) + std::move(outcome.answer),
              outcome.hang_up_at.has_value()};
}

/// True when nothing is left to send.
bool CClientConnection::Flush() {
  while (sent_ < outgoing_.size()) {
    const tagTransfer sent = socket_.Send(std::string_view(outgoing_).substr(sent_));
    if (sent.result != SocketResult::kDone) {
      is_over_ = sent.result != SocketResult::kWouldBlock;
      return false;
    }
    sent_ += sent.size;
  }
  outgoing_.clear();
  sent_ = 0;
  return true;
}

}  // namespace lxemu
