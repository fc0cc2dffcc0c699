#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/sockets.h"

namespace tavira::test {

/**
 * Sockets without a network: every call succeeds unless it is named in `failing`, and is logged. Nothing is
 * ever readable but for what `arrivals` holds.
 */
class CScriptedSockets final : public ISockets {
 public:
  std::set<std::string> failing; /**< "create", "bind", "connect", "send", "receive", "poll", "option" ... */
  std::uint32_t error = 10013;   /**< of what fails */
  std::function<bool(int)> on_connect; /**< in place of `failing`: the number of the attempt, from 1 */
  std::function<void()> on_poll;
  int failing_receives = 0; /**< so many fail, and leave what has arrived */
  std::vector<std::pair<std::string, tagEndpoint>> arrivals;

  std::size_t Calls() const {
    const std::lock_guard guard(lock_);
    return log_.size();
  }
  std::size_t Count(const std::string& call) const {
    const std::lock_guard guard(lock_);
    return static_cast<std::size_t>(std::count(log_.begin(), log_.end(), call));
  }
  void ClearLog() {
    const std::lock_guard guard(lock_);
    log_.clear();
  }
  std::size_t OpenSockets() const {
    const std::lock_guard guard(lock_);
    return open_.size();
  }
  tagEndpoint last_bound;
  tagEndpoint last_sent_to;
  std::map<std::string, std::uint32_t> options;    /**< the last value of each */
  std::map<std::uint32_t, std::uint32_t> controls; /**< the last argument of each command */

  SocketHandle Create(std::int32_t type) override {
    if (!Do("create " + std::to_string(type), "create")) {
      return kInvalidSocket;
    }
    const std::lock_guard guard(lock_);
    open_.insert(++last_handle_);
    return last_handle_;
  }
  bool Bind(SocketHandle, const tagEndpoint& local) override {
    last_bound = local;
    return Do("bind", "bind");
  }
  bool Connect(SocketHandle, const tagEndpoint&) override {
    const bool done = Do("connect", "connect");
    return on_connect ? on_connect(static_cast<int>(Count("connect"))) : done;
  }
  std::int32_t Send(SocketHandle, const void*, std::size_t size) override {
    return Do("send", "send") ? static_cast<std::int32_t>(size) : -1;
  }
  std::int32_t SendTo(SocketHandle, const void*, std::size_t size, const tagEndpoint& to) override {
    last_sent_to = to;
    return Do("sendto", "send") ? static_cast<std::int32_t>(size) : -1;
  }
  std::int32_t Receive(SocketHandle socket, void* buffer, std::size_t size) override {
    tagEndpoint from;
    return ReceiveFrom(socket, buffer, size, from);
  }
  std::int32_t ReceiveFrom(SocketHandle, void* buffer, std::size_t size, tagEndpoint& from) override {
    if (!Do("receive", "receive") || arrivals.empty() || (failing_receives > 0 && failing_receives-- > 0)) {
      return -1;
    }
    const auto [bytes, sender] = arrivals.front();
    arrivals.erase(arrivals.begin());
    from = sender;
    return static_cast<std::int32_t>(bytes.copy(static_cast<char*>(buffer), size));
  }
  /** Of one socket; never waits. */
  std::int32_t Poll(std::span<tagSocketPoll> sockets, std::uint32_t) override {
    if (on_poll) {
      on_poll();
    }
    sockets[0].is_readable = !arrivals.empty();
    return !Do("poll", "poll") ? -1 : arrivals.empty() ? 0 : 1;
  }
  bool SetOption(SocketHandle, ESocketOption option, std::uint32_t value) override {
    const char* name = option == ESocketOption::kSendTimeout      ? "send timeout"
                       : option == ESocketOption::kReceiveTimeout ? "receive timeout"
                       : option == ESocketOption::kReceiveBuffer  ? "receive buffer"
                                                                  : "broadcast";
    options[name] = value;
    return Do(name, name);
  }
  bool Control(SocketHandle, std::uint32_t command, std::uint32_t& argument) override {
    controls[command] = std::exchange(argument, 77);
    return Do("control", "control");
  }
  bool Shutdown(SocketHandle) override { return Do("shutdown", "shutdown"); }
  bool Close(SocketHandle socket) override {
    const std::lock_guard guard(lock_);
    return open_.erase(socket) == 1;
  }
  std::optional<std::uint32_t> Resolve(const std::string& host) override {
    return host == "printer" ? std::optional(0x0A000001U) : std::nullopt;
  }
  std::uint32_t LastError() override { return error; }

 private:
  bool Do(const std::string& entry, const std::string& call) {
    const std::lock_guard guard(lock_);
    log_.push_back(entry);
    return failing.count(call) == 0;
  }

  mutable std::mutex lock_;
  std::vector<std::string> log_;
  std::set<SocketHandle> open_;
  SocketHandle last_handle_ = 0;
};

}  // namespace tavira::test
