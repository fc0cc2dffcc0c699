#include "discovery/search/upiqldp.h"

#include "platform/sockets.h"

namespace tavira {
namespace {

constexpr std::uint32_t kAddressKind = 1;
constexpr int kMaxReceives = 6;
constexpr int kMaxOldAnswers = 16;

}  // namespace

std::uint32_t CUPIQLDP::Open(const tagNetAddress& address) {
  if (address.kind != kAddressKind) {
    return kNetFailed;
  }
  const std::uint32_t result = connection_.Open(&address, kSelectorSearch);
  if (result != kNetDone) {
    connection_.Release();
    return result;
  }
  connection_.SetRemotePort(SwapPort(port_));
  return kNetDone;
}

std::uint32_t CUPIQLDP::Exchange(std::uint32_t command, std::string& answer,
                                 const std::stop_token& given_up) {
  buffer_.resize(kMaxSearchAnswer);
  DropOldAnswers();
  const std::string request = BuildSearchRequest(command, target_.value_or(MacAddress{}));
  std::uint32_t result =
      connection_.Send(request.data(), static_cast<std::uint32_t>(request.size()), nullptr);
  if (result != kNetDone) {
    return result;
  }
  std::uint32_t count = 0;
  result = kNetNothingReceived;
  for (int i = 0; i < kMaxReceives && result == kNetNothingReceived; ++i) {
    if (given_up.stop_requested()) {
      return kNetFailed;
    }
    result = connection_.ReceiveWait(buffer_.data(), static_cast<std::uint32_t>(buffer_.size()), &count, 1);
  }
  if (result != kNetDone) {
    return result;
  }
  // Only what this datagram brought: behind it stand bytes of an earlier one.
  const std::string_view received = std::string_view(buffer_).substr(0, count);
  if (!IsGoodAnswer(received, command, target_)) {
    return kNetFailed;
  }
  answer = received;
  return kNetDone;
}

// A printer that answers everything twice would have its second answer taken for one to the next request.
void CUPIQLDP::DropOldAnswers() {
  const std::uint16_t port = connection_.GetRemotePort();
  for (int i = 0; i < kMaxOldAnswers; ++i) {
    std::uint32_t count = 0;
    if (connection_.ReceiveWait(buffer_.data(), static_cast<std::uint32_t>(buffer_.size()), &count, 0) !=
        kNetDone) {
      break;
    }
  }
  connection_.SetRemotePort(port);
}

}  // namespace tavira
