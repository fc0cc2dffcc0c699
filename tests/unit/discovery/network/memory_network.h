#pragma once

#include <algorithm>
#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "emulator/network/search_answer.h"
#include "emulator/network/socket.h"
#include "platform/clock.h"
#include "platform/sockets.h"
#include "support/faults.h"

namespace tavira::test {

/**
 * Datagram sockets on a network of emulated printers that exists in memory only, in the time of a test's clock:
 * 10.0.0.2, 10.0.0.3 ...
 */
class CMemoryNetwork final : public ISockets {
 public:
  static constexpr std::uint32_t kFirstAddress = 0x0A000002;
  static constexpr std::uint16_t kOtherPort = 50000; /**< of printers that answer from another one */

  CMemoryNetwork(IClock& clock, const std::vector<lxemu::tagSearchPlan>& plans)
      : clock_(clock), plans_(plans) {}

  std::atomic<std::size_t> most_sockets{10000}; /**< more cannot be created */
  std::atomic<int> failing_receives{0}; /**< the first ones of each socket made from now on, with 10054 */
  std::atomic<int> failing_polls{0};    /**< so many from now on */
  std::atomic<bool> is_silent{false};   /**< all printers ignore what comes */
  std::function<void(std::string&)> on_datagram; /**< sees whatever a printer sends, and may change it */

  /** How many requests to single printers have been sent. */
  int Requests() const { return requests_; }
  std::size_t OpenSockets() const {
    const std::lock_guard guard(lock_);
    return inboxes_.size();
  }
  /** A datagram for the socket that has broadcast last, from that address. */
  void Deliver(std::string bytes, std::uint32_t address) {
    const std::lock_guard guard(lock_);
    inboxes_.at(searcher_).datagrams.push_back({std::move(bytes), {address, 3289}, clock_.TickCount()});
  }

  SocketHandle Create(std::int32_t) override {
    const std::lock_guard guard(lock_);
    if (inboxes_.size() >= most_sockets || Strikes()) {
      return kInvalidSocket;
    }
    inboxes_[++last_handle_].failures_left = failing_receives;
    return last_handle_;
  }
  bool Bind(SocketHandle, const tagEndpoint&) override { return !Strikes(); }
  bool Connect(SocketHandle, const tagEndpoint&) override { return false; }
  std::int32_t Send(SocketHandle, const void*, std::size_t) override { return -1; }
  std::int32_t SendTo(SocketHandle socket, const void* bytes, std::size_t size,
                      const tagEndpoint& to) override {
    const std::lock_guard guard(lock_);
    const std::string_view datagram(static_cast<const char*>(bytes), size);
    if (Strikes()) {
      return -1;
    }
    const bool is_broadcast = to.address == 0xFFFFFFFF;
    searcher_ = is_broadcast ? socket : searcher_;
    requests_ += is_broadcast ? 0 : 1;
    for (std::uint32_t i = 0; i < plans_.size() && !is_silent; ++i) {
      if (is_broadcast || to.address == kFirstAddress + i) {
        Answer(i, datagram, inboxes_.at(socket));
      }
    }
    return static_cast<std::int32_t>(size);
  }
  std::int32_t Receive(SocketHandle, void*, std::size_t) override { return -1; }
  std::int32_t ReceiveFrom(SocketHandle socket, void* buffer, std::size_t size, tagEndpoint& from) override {
    const std::lock_guard guard(lock_);
    tagInbox& inbox = inboxes_.at(socket);
    const auto datagram = FirstDue(inbox);
    if (datagram == inbox.datagrams.end() || inbox.failures_left-- > 0 || Strikes()) {
      return -1;
    }
    from = datagram->from;
    const std::string bytes = std::move(datagram->bytes);
    inbox.datagrams.erase(datagram);
    // One that is too long fails, and its beginning is there all the same.
    const std::size_t copied = bytes.copy(static_cast<char*>(buffer), size);
    return bytes.size() > size ? -1 : static_cast<std::int32_t>(copied);
  }
  std::int32_t Poll(std::span<tagSocketPoll> sockets, std::uint32_t wait_ms) override {
    if (Strikes()) {
      return -1;
    }
    if (failing_polls > 0 && sockets.size() > 1) {
      --failing_polls;
      return -1;
    }
    const std::uint32_t start = clock_.TickCount();
    for (;;) {
      std::uint32_t next_ms = wait_ms - std::min(wait_ms, clock_.TickCount() - start);
      if (const std::int32_t count = CountReadable(sockets, next_ms); count != 0 || next_ms == 0) {
        return count;
      }
      clock_.Sleep(next_ms);
    }
  }
  bool SetOption(SocketHandle, ESocketOption, std::uint32_t) override { return !Strikes(); }
  bool Control(SocketHandle, std::uint32_t, std::uint32_t&) override { return !Strikes(); }
  bool Shutdown(SocketHandle) override { return true; }
  bool Close(SocketHandle socket) override {
    const std::lock_guard guard(lock_);
    return inboxes_.erase(socket) == 1;
  }
  std::optional<std::uint32_t> Resolve(const std::string& host) override {
    return Strikes() ? std::nullopt : lxemu::ParseIpv4(host);
  }
  std::uint32_t LastError() override { return 10054; }

 private:
  static bool Strikes() { return CFaults::Strikes(EFault::kSocketCall); }

  struct tagDatagram {
    std::string bytes;
    tagEndpoint from;
    std::uint32_t due = 0;
  };
  struct tagInbox {
    std::deque<tagDatagram> datagrams;
    int failures_left = 0;
  };

  std::uint32_t TimeUntil(const tagDatagram& datagram) const {
    const std::uint32_t ms = datagram.due - clock_.TickCount();
    return static_cast<std::int32_t>(ms) > 0 ? ms : 0;
  }
  std::deque<tagDatagram>::iterator FirstDue(tagInbox& inbox) const {
    return std::find_if(inbox.datagrams.begin(), inbox.datagrams.end(),
                        [this](const tagDatagram& datagram) { return TimeUntil(datagram) == 0; });
  }
  /** Lowers `next_ms` to the time until the next one is. */
  std::int32_t CountReadable(std::span<tagSocketPoll> sockets, std::uint32_t& next_ms) {
    const std::lock_guard guard(lock_);
    std::int32_t count = 0;
    for (tagSocketPoll& poll : sockets) {
      tagInbox& inbox = inboxes_.at(poll.socket);
      poll.is_readable = FirstDue(inbox) != inbox.datagrams.end();
      count += poll.is_readable ? 1 : 0;
      for (std::size_t i = 0; i < inbox.datagrams.size() && !poll.is_readable; ++i) {
        next_ms = std::min(next_ms, TimeUntil(inbox.datagrams[i]));
      }
    }
    return count;
  }
  void Answer(std::uint32_t index, std::string_view datagram, tagInbox& inbox) const {
    lxemu::tagSearchIdentity identity;
    identity.name = "printer " + std::to_string(index + 2);
    for (lxemu::tagSearchAnswer& answer : lxemu::AnswerSearch(datagram, identity, plans_[index])) {
      if (on_datagram) {
        on_datagram(answer.bytes);
      }
      const std::uint16_t port = answer.from_other_port ? kOtherPort : std::uint16_t{3289};
      inbox.datagrams.push_back(
          {answer.bytes, {kFirstAddress + index, port}, clock_.TickCount() + answer.after_ms});
    }
  }

  IClock& clock_;
  mutable std::mutex lock_;
  const std::vector<lxemu::tagSearchPlan> plans_;
  std::map<SocketHandle, tagInbox> inboxes_;
  SocketHandle last_handle_ = 0;
  SocketHandle searcher_ = kInvalidSocket;
  std::atomic<int> requests_{0};
};

}  // namespace tavira::test
