#pragma once

#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "emulator/network/search_answer.h"
#include "emulator/network/socket.h"
#include "platform/sockets.h"

namespace tavira::test {

/** Datagram sockets on a network of emulated printers that exists in memory only: 10.0.0.2, 10.0.0.3 ... */
class CMemoryNetwork final : public ISockets {
 public:
  static constexpr std::uint32_t kFirstAddress = 0x0A000002;
  static constexpr std::uint16_t kOtherPort = 50000; /**< of printers that answer from another one */

  explicit CMemoryNetwork(const std::vector<lxemu::tagSearchPlan>& plans) : plans_(plans) {}

  /** All printers ignore what comes from now on. */
  void FallSilent() {
    const std::lock_guard guard(lock_);
    is_silent_ = true;
  }
  /** How many requests to single printers have been sent. */
  int Requests() const {
    const std::lock_guard guard(lock_);
    return requests_;
  }
  std::size_t OpenSockets() const {
    const std::lock_guard guard(lock_);
    return inboxes_.size();
  }
  /** A datagram for the socket that has broadcast last, from the printer with that index. */
  void Deliver(std::string bytes, std::uint32_t printer) {
    const std::lock_guard guard(lock_);
    inboxes_.at(searcher_).emplace_back(std::move(bytes), tagEndpoint{kFirstAddress + printer, 3289});
  }

  SocketHandle Create(std::int32_t) override {
    const std::lock_guard guard(lock_);
    inboxes_[++last_handle_];
    return last_handle_;
  }
  bool Bind(SocketHandle, const tagEndpoint&) override { return true; }
  bool Connect(SocketHandle, const tagEndpoint&) override { return false; }
  std::int32_t Send(SocketHandle, const void*, std::size_t) override { return -1; }
  std::int32_t SendTo(SocketHandle socket, const void* bytes, std::size_t size,
                      const tagEndpoint& to) override {
    const std::lock_guard guard(lock_);
    const std::string_view datagram(static_cast<const char*>(bytes), size);
    const bool is_broadcast = to.address == 0xFFFFFFFF;
    searcher_ = is_broadcast ? socket : searcher_;
    requests_ += is_broadcast ? 0 : 1;
    for (std::uint32_t i = 0; i < plans_.size() && !is_silent_; ++i) {
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
    if (inbox.empty()) {
      return -1;
    }
    const auto [bytes, sender] = std::move(inbox.front());
    inbox.pop_front();
    if (bytes.size() > size) {
      return -1;
    }
    from = sender;
    return static_cast<std::int32_t>(bytes.copy(static_cast<char*>(buffer), size));
  }
  std::int32_t PollReadable(SocketHandle socket, std::uint32_t) override {
    const std::lock_guard guard(lock_);
    return inboxes_.at(socket).empty() ? 0 : 1;
  }
  bool SetOption(SocketHandle, ESocketOption, std::uint32_t) override { return true; }
  bool Control(SocketHandle, std::uint32_t, std::uint32_t&) override { return true; }
  bool Shutdown(SocketHandle) override { return true; }
  bool Close(SocketHandle socket) override {
    const std::lock_guard guard(lock_);
    return inboxes_.erase(socket) == 1;
  }
  std::optional<std::uint32_t> Resolve(const std::string& host) override { return lxemu::ParseIpv4(host); }
  std::uint32_t LastError() override { return kSocketErrorWouldBlock; }

 private:
  using tagInbox = std::deque<std::pair<std::string, tagEndpoint>>;

  void Answer(std::uint32_t index, std::string_view datagram, tagInbox& inbox) const {
    lxemu::tagSearchIdentity identity;
    identity.name = "printer " + std::to_string(index + 2);
    for (const lxemu::tagSearchAnswer& answer : lxemu::AnswerSearch(datagram, identity, plans_[index])) {
      const std::uint16_t port = answer.from_other_port ? kOtherPort : std::uint16_t{3289};
      inbox.emplace_back(answer.bytes, tagEndpoint{kFirstAddress + index, port});
    }
  }

  mutable std::mutex lock_;
  const std::vector<lxemu::tagSearchPlan> plans_;
  std::map<SocketHandle, tagInbox> inboxes_;
  SocketHandle last_handle_ = 0;
  SocketHandle searcher_ = kInvalidSocket;
  int requests_ = 0;
  bool is_silent_ = false;
};

}  // namespace tavira::test
