#include "discovery/search/tv_async_socket.h"

#include <algorithm>
#include <array>
#include <new>

#include "discovery/network/socket_proc.h"
#include "discovery/search/upiqldp.h"

namespace tavira {
namespace {

// What one Serve takes at most, so that a flood of datagrams cannot hold up the end of the search.
constexpr int kMaxDatagramsPerTurn = 64;

std::string DottedText(std::uint32_t address) {
  return std::to_string(address >> 24) + '.' + std::to_string(address >> 16 & 0xFF) + '.' +
         std::to_string(address >> 8 & 0xFF) + '.' + std::to_string(address & 0xFF);
}

}  // namespace

CTVAsyncSocket::CTVAsyncSocket(ISockets& sockets, IClock& clock, ITextCodec& codec,
                               const tagSearchNetwork& network)
    : sockets_(sockets), clock_(clock), codec_(codec), network_(network), socket_(sockets) {}

bool CTVAsyncSocket::OpenBroadcast() {
  const std::lock_guard guard(lock_);
  is_searching_ = true;
  is_collected_ = false;
  found_.clear();
  addresses_.clear();
  const std::string datagram = BuildBroadcast();
  return MakeSocket() && sockets_.SendTo(socket_.Get(), datagram.data(), datagram.size(),
                                         {network_.broadcast_address, network_.port}) ==
                             static_cast<std::int32_t>(datagram.size());
}

bool CTVAsyncSocket::MakeSocket() {
  socket_.Reset(sockets_.Create(kDatagramSocket));
  std::uint32_t non_blocking = 1;
  return socket_.IsOpen() && sockets_.Bind(socket_.Get(), {}) &&
         sockets_.Control(socket_.Get(), kControlNonBlocking, non_blocking) &&
         sockets_.SetOption(socket_.Get(), ESocketOption::kBroadcast, 1);
}

void CTVAsyncSocket::Serve() {
  const std::lock_guard guard(lock_);
  TakeAnnouncements();
}

void CTVAsyncSocket::TakeAnnouncements() {
  for (int i = 0; i < kMaxDatagramsPerTurn && is_searching_ && socket_.IsOpen(); ++i) {
    if (sockets_.PollReadable(socket_.Get(), 0) <= 0) {
      return;
    }
    OnReceive();
  }
}

void CTVAsyncSocket::OnReceive() {
  std::array<char, kMaxAnnouncement> buffer;
  tagEndpoint sender;
  const std::int32_t size = sockets_.ReceiveFrom(socket_.Get(), buffer.data(), buffer.size(), sender);
  if (size <= 0 || !IsAnnouncement({buffer.data(), static_cast<std::size_t>(size)})) {
    return;
  }
  try {
    std::string address = DottedText(sender.address);
    if (std::find(addresses_.begin(), addresses_.end(), address) == addresses_.end()) {
      addresses_.push_back(std::move(address));
    }
  } catch (const std::bad_alloc&) {  // not found then: the worker has nobody to tell
  }
}

void CTVAsyncSocket::Collect(const std::stop_token& given_up) {
  std::vector<std::string> addresses;
  {
    const std::lock_guard guard(lock_);
    TakeAnnouncements();  // those since the last turn
    is_searching_ = false;
    socket_.Reset();
    if (is_collected_) {
      return;
    }
    addresses = addresses_;
  }
  // Without the lock: it takes seconds when a printer has fallen silent.
  std::vector<tagFoundPrinter> found;
  for (const std::string& address : addresses) {
    if (given_up.stop_requested()) {
      return;
    }
    if (std::optional<tagFoundPrinter> printer = Ask(address, given_up)) {
      found.push_back(std::move(*printer));
    }
  }
  const std::lock_guard guard(lock_);
  found_ = std::move(found);
  is_collected_ = true;
}

std::optional<tagFoundPrinter> CTVAsyncSocket::Ask(const std::string& address,
                                                   const std::stop_token& given_up) {
  tagNetAddress whom{};
  whom.kind = 1;
  std::copy(address.begin(), address.end(), std::begin(whom.host));
  CSocketProc connection(sockets_, clock_, codec_);
  CUPIQLDP driver(connection, network_.port);
  std::string answer;
  if (driver.Open(whom) != kNetDone || driver.Exchange(kSearchState, answer, given_up) != kNetDone ||
      driver.Exchange(kSearchNames, answer, given_up) != kNetDone) {
    return std::nullopt;
  }
  const tagPrinterNames names = ReadPrinterNames(answer);
  tagFoundPrinter printer;
  printer.kind = TVMGR_SEARCH_NETWORK;
  printer.text1 = codec_.FromAnsi(names.first);
  printer.text2 = codec_.FromAnsi(names.second);
  printer.text5 = WidenAscii(address);
  return printer;
}

std::vector<tagFoundPrinter> CTVAsyncSocket::FoundPrinters() {
  const std::lock_guard guard(lock_);
  return found_;
}

}  // namespace tavira
