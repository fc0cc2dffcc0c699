#include "discovery/search/upiqldp.h"

namespace tavira {
namespace {

constexpr std::uint32_t kAddressKind = 1;
constexpr int kMaxOldAnswers = 16;
// What one Take looks at, so that a flood for one printer does not keep the others waiting.
constexpr int kMaxDatagramsPerTurn = 16;
// Of one question. A socket on which no receive succeeds at all is readable all the time.
constexpr int kMaxFailures = 64;

}  // namespace

std::uint32_t CUPIQLDP::Open(const tagNetAddress& address) {
  if (address.kind != kAddressKind) {
    return kNetFailed;
  }
  std::uint32_t result = connection_.Open(&address, kSelectorSearch);
  // A datagram that turns out to be damaged when it is received would leave that waiting for another one.
  std::uint32_t non_blocking = 1;
  if (result == kNetDone && connection_.Control(kControlNonBlocking, &non_blocking) != kNetDone) {
    result = kNetFailed;
  }
  if (result != kNetDone) {
    connection_.Close(0);
    connection_.Release();
    return result;
  }
  connection_.SetRemotePort(SwapPort(port_));
  answer_.clear();
  return kNetDone;
}

std::uint32_t CUPIQLDP::Ask(std::uint32_t command) {
  DropOldAnswers();
  if (command == command_) {
    answer_.clear();  // the same answer again is then what is asked for
  }
  command_ = command;
  failures_ = 0;
  const std::string request = BuildSearchRequest(command, target_.value_or(MacAddress{}));
  return connection_.Send(request.data(), static_cast<std::uint32_t>(request.size()), nullptr);
}

std::uint32_t CUPIQLDP::Take() {
  for (int i = 0; i < kMaxDatagramsPerTurn; ++i) {
    const std::uint16_t port = connection_.GetRemotePort();
    std::string_view datagram;
    const std::uint32_t result = Receive(datagram);
    if (result == kNetNothingReceived) {
      return result;
    }
    if (result != kNetDone) {
      if (++failures_ == kMaxFailures) {
        return result;
      }
      continue;
    }
    if (connection_.Sender().address != connection_.Remote().address || datagram == answer_) {
      connection_.SetRemotePort(port);
      continue;
    }
    if (!IsGoodAnswer(datagram, command_, target_)) {
      return kNetFailed;
    }
    answer_ = datagram;
    return kNetDone;
  }
  return kNetNothingReceived;
}

void CUPIQLDP::DropOldAnswers() {
  const std::uint16_t port = connection_.GetRemotePort();
  std::string_view datagram;
  for (int i = 0; i < kMaxOldAnswers && Receive(datagram) != kNetNothingReceived; ++i) {
  }
  connection_.SetRemotePort(port);
}

/** One datagram, when there is one. The view holds what it brought alone: behind it stand bytes of earlier ones. */
std::uint32_t CUPIQLDP::Receive(std::string_view& datagram) {
  std::uint32_t count = 0;
  const std::uint32_t result = connection_.ReceiveWait(buffer_, sizeof buffer_, &count, 0);
  datagram = {buffer_, count};
  return result;
}

}  // namespace tavira
