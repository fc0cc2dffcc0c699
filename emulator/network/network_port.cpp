#include "emulator/network/network_port.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "emulator/port/port_endpoint.h"

namespace lxemu {
namespace {

constexpr std::uint16_t kDefaultPort = 9100;

std::optional<tagSocketAddress> ReadAddress(std::string_view text) {
  tagSocketAddress address{0, kDefaultPort};
  const std::size_t colon = text.find(':');
  if (colon != text.npos) {
    const std::string_view port = text.substr(colon + 1);
    const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), address.port);
    if (error != std::errc{} || end != port.data() + port.size() || address.port == 0) {
      return std::nullopt;
    }
  }
  const std::string host(text.substr(0, colon));
  const std::optional<std::uint32_t> ip = host.empty() ? std::nullopt : ResolveHost(host);
  if (!ip) {
    return std::nullopt;
  }
  address.ip = *ip;
  return address;
}

}  // namespace

std::int32_t CNetworkPort::Open(std::string_view address) {
  if (IsOpen()) {
    return kPortAlreadyOpen;
  }
  const std::optional<tagSocketAddress> target = ReadAddress(address);
  if (!target) {
    return kPortNoAddress;
  }
  number_ = 0;
  taken_ = 0;
  incoming_.clear();
  Clear();
  receive_buffer_.resize(kReceiveBuffer);
  switch (CSocket::Connect(*target, bounds_.connect_ms, socket_)) {
    case SocketResult::kDone:
      return kPortOk;
    case SocketResult::kRefused:
      return kPortRefused;
    default:
      return kPortUnreachable;
  }
}

std::int32_t CNetworkPort::Close() {
  if (!IsOpen()) {
    return kPortNotOpen;
  }
  socket_.ShutdownSend();
  socket_.Close();
  return kPortOk;
}

std::int32_t CNetworkPort::Send(const std::uint8_t* data, std::uint32_t size) {
  if (!IsOpen()) {
    return kPortNotOpen;
  }
  if (data == nullptr) {
    return kPortNullPointer;
  }
  Clear();
  ++number_;
  wants_answer_ = true;
  std::int32_t code = SendAll(RecordHeader({RecordKind::kCommands, number_, size}));
  if (code == kPortOk) {
    code = SendAll({reinterpret_cast<const char*>(data), size});
  }
  return code == kPortOk ? WaitUntilTaken() : code;
}

std::int32_t CNetworkPort::Receive(std::uint8_t* buffer_or_null, std::uint32_t* size) {
  if (!IsOpen()) {
    return kPortNotOpen;
  }
  if (size == nullptr) {
    return kPortNullPointer;
  }
  if (buffer_or_null != nullptr) {
    *size = static_cast<std::uint32_t>(std::min<std::size_t>(*size, answer_.size() - read_position_));
    answer_.copy(reinterpret_cast<char*>(buffer_or_null), *size, read_position_);
    read_position_ += *size;
    return kPortOk;
  }
  *size = 0;
  std::int32_t code = kPortOk;
  if (read_position_ == answer_.size()) {
    code = Pump();
    while (code == kPortOk && wants_answer_ && !incoming_.empty()) {
      code = WaitForPeer(false);
      if (code == kPortOk) {
        code = Pump();
      }
    }
  }
  *size = static_cast<std::uint32_t>(answer_.size() - read_position_);
  return *size > 0 ? kPortOk : code;
}

std::int32_t CNetworkPort::Clear() {
  wants_answer_ = false;
  answer_.clear();
  read_position_ = 0;
  return IsOpen() ? kPortOk : kPortNotOpen;
}

std::int32_t CNetworkPort::SendAll(std::string_view bytes) {
  while (!bytes.empty()) {
    const tagTransfer sent = socket_.Send(bytes);
    if (sent.result == SocketResult::kDone) {
      bytes.remove_prefix(sent.size);
      continue;
    }
    if (sent.result != SocketResult::kWouldBlock) {
      return kPortBroken;
    }
    std::int32_t code = WaitForPeer(true);
    if (code == kPortOk) {
      code = Pump();  // The printer may itself wait for room, with an answer that nobody read.
    }
    if (code != kPortOk) {
      return code;
    }
  }
  return kPortOk;
}

std::int32_t CNetworkPort::WaitUntilTaken() {
  while (taken_ != number_) {
    std::int32_t code = WaitForPeer(false);
    if (code == kPortOk) {
      code = Pump();
    }
    if (code != kPortOk && taken_ != number_) {
      return code;
    }
  }
  return kPortOk;
}

std::int32_t CNetworkPort::Pump() {
  while (true) {
    const tagTransfer received = socket_.Receive(receive_buffer_);
    if (received.result == SocketResult::kDone) {
      incoming_.append(receive_buffer_, 0, received.size);
      continue;
    }
    const std::int32_t code = TakeRecords();
    return code == kPortOk && received.result != SocketResult::kWouldBlock ? kPortBroken : code;
  }
}

std::int32_t CNetworkPort::TakeRecords() {
  std::size_t position = 0;
  std::int32_t code = kPortOk;
  while (incoming_.size() - position >= kRecordHeaderSize) {
    const std::optional<tagRecordHeader> header =
        ParseRecordHeader(std::string_view(incoming_).substr(position));
    if (!header || header->length > kMaximumRecord ||
        (header->kind != RecordKind::kTaken && header->kind != RecordKind::kAnswer)) {
      code = kPortNoPrinter;
      break;
    }
    const std::size_t begin = position + kRecordHeaderSize;
    if (incoming_.size() - begin < header->length) {
      break;
    }
    position = begin + header->length;
    if (header->kind == RecordKind::kTaken) {
      taken_ = header->number;
    } else if (wants_answer_ && header->number == number_) {
      wants_answer_ = false;
      answer_.assign(incoming_, begin, header->length);
      read_position_ = 0;
    }
  }
  incoming_.erase(0, position);
  return code;
}

std::int32_t CNetworkPort::WaitForPeer(bool for_room) {
  tagSocketWait wait{&socket_, true, for_room};
  WaitForSockets({&wait, 1}, bounds_.stall_ms);
  return wait.is_readable || wait.is_writable ? kPortOk : kPortStalled;
}

}  // namespace lxemu
