#include "discovery/search/tv_async_socket.h"

#include <algorithm>
#include <array>

#include "discovery/search/answer_collection.h"

namespace tavira {
namespace {

// Room for the announcements of all printers at once; most systems have less by themselves.
constexpr std::uint32_t kReceiveBuffer = 1U << 20;
// What one Serve takes at most, so that a flood of datagrams cannot hold up the end of the search.
constexpr int kMaxAnnouncementsPerTurn = 256;
// At the end of the search: more than the receive buffer holds, unless they keep coming.
constexpr int kMaxDatagramsAtEnd = 1 << 14;

}  // namespace

CTVAsyncSocket::CTVAsyncSocket(const tagNetPlatform& platform, const tagSearchNetwork& network)
    : platform_(platform), network_(network), socket_(platform.sockets) {}

bool CTVAsyncSocket::OpenBroadcast() {
  const std::lock_guard guard(lock_);
  is_searching_ = true;
  is_collected_ = false;
  found_.clear();
  addresses_.clear();
  addresses_.reserve(kMaxSearchedPrinters);
  const std::string datagram = BuildBroadcast();
  return MakeSocket() && platform_.sockets.SendTo(socket_.Get(), datagram.data(), datagram.size(),
                                                  {network_.broadcast_address, network_.port}) ==
                             static_cast<std::int32_t>(datagram.size());
}

bool CTVAsyncSocket::MakeSocket() {
  ISockets& sockets = platform_.sockets;
  socket_.Reset(sockets.Create(kDatagramSocket));
  std::uint32_t non_blocking = 1;
  const bool is_made = socket_.IsOpen() && sockets.Bind(socket_.Get(), {}) &&
                       sockets.Control(socket_.Get(), kControlNonBlocking, non_blocking) &&
                       sockets.SetOption(socket_.Get(), ESocketOption::kBroadcast, 1);
  if (is_made) {
    // The smaller one that stays without it does for a hundred printers.
    sockets.SetOption(socket_.Get(), ESocketOption::kReceiveBuffer, kReceiveBuffer);
  }
  return is_made;
}

void CTVAsyncSocket::Serve() {
  const std::lock_guard guard(lock_);
  TakeAnnouncements(kMaxAnnouncementsPerTurn);
}

void CTVAsyncSocket::TakeAnnouncements(int most) {
  for (int i = 0; i < most && is_searching_ && socket_.IsOpen(); ++i) {
    if (platform_.sockets.PollReadable(socket_.Get(), 0) <= 0) {
      return;
    }
    OnReceive();
  }
}

// A receive that fails says nothing about the datagrams behind it.
void CTVAsyncSocket::OnReceive() {
  std::array<char, kMaxAnnouncement> buffer;
  tagEndpoint sender;
  const std::int32_t size =
      platform_.sockets.ReceiveFrom(socket_.Get(), buffer.data(), buffer.size(), sender);
  const bool is_taken = size > 0 && addresses_.size() < kMaxSearchedPrinters &&
                        IsAnnouncement({buffer.data(), static_cast<std::size_t>(size)});
  if (is_taken && std::find(addresses_.begin(), addresses_.end(), sender.address) == addresses_.end()) {
    addresses_.push_back(sender.address);
  }
}

bool CTVAsyncSocket::Collect(const std::atomic<bool>& given_up) {
  std::vector<std::uint32_t> addresses;
  {
    const std::lock_guard guard(lock_);
    TakeAnnouncements(kMaxDatagramsAtEnd);
    is_searching_ = false;
    socket_.Reset();
    if (is_collected_) {
      return true;
    }
    addresses = addresses_;
  }
  // Without the lock: it takes seconds when a printer has fallen silent.
  CAnswerCollection collection(platform_, std::move(addresses), network_.port);
  std::vector<tagFoundPrinter> found = collection.Run(given_up);
  if (given_up) {
    return false;
  }
  const std::lock_guard guard(lock_);
  found_ = std::move(found);
  is_collected_ = true;
  return true;
}

std::vector<tagFoundPrinter> CTVAsyncSocket::FoundPrinters() {
  const std::lock_guard guard(lock_);
  return found_;
}

}  // namespace tavira
