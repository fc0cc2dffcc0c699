#include "search_support.h"

#include <array>
#include <stdexcept>

namespace tavira::test {

std::uint64_t CPacedClock::Now() const {
  const auto real = std::chrono::duration_cast<std::chrono::microseconds>(RealClock::now() - flows_since_);
  return base_ms_ + (speed_ == 0 ? 0 : static_cast<std::uint64_t>(real.count()) * speed_ / 1000);
}

std::uint32_t CPacedClock::TickCount() {
  const std::lock_guard guard(lock_);
  return static_cast<std::uint32_t>(Now());
}

void CPacedClock::Sleep(std::uint32_t ms) {
  std::unique_lock guard(lock_);
  const std::uint64_t end = Now() + ms;
  while (Now() < end) {
    if (speed_ == 0) {
      changed_.wait(guard);
    } else {
      changed_.wait_for(guard, std::chrono::microseconds((end - Now()) * 1000 / speed_ + 1));
    }
  }
}

void CPacedClock::Advance(std::uint32_t ms) {
  const std::lock_guard guard(lock_);
  base_ms_ += ms;
  changed_.notify_all();
}

void CPacedClock::Flow(std::uint32_t speed) {
  const std::lock_guard guard(lock_);
  base_ms_ = Now();
  speed_ = speed;
  flows_since_ = RealClock::now();
  changed_.notify_all();
}

bool Eventually(const std::function<bool()>& condition) {
  for (int i = 0; i < 10000; ++i) {
    if (condition()) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

std::string CLatin1Codec::ToAnsi(WideView text) {
  std::string bytes;
  for (const TvmgrChar character : text) {
    bytes.push_back(character < 0x100 ? static_cast<char>(character) : '?');
  }
  return bytes;
}

WideString CLatin1Codec::FromAnsi(std::string_view bytes) {
  WideString text;
  for (const char byte : bytes) {
    text.push_back(static_cast<TvmgrChar>(static_cast<unsigned char>(byte)));
  }
  return text;
}

CLoopbackPrinters::CLoopbackPrinters(const std::vector<lxemu::tagSearchPlan>& plans) {
  lxemu::StartSockets();
  for (std::size_t i = 0; i < plans.size(); ++i) {
    members_.push_back({{"LX-R4100", "printer " + std::to_string(i + 2), {}}, plans[i]});
  }
  // A port that is free on one address may be taken on another.
  for (int i = 0; i < 20 && !Bind(); ++i) {
  }
  if (port_ == 0) {
    throw std::runtime_error("no loopback port");
  }
  thread_ = std::thread(&CLoopbackPrinters::Run, this);
}

CLoopbackPrinters::~CLoopbackPrinters() {
  stop_ = true;
  thread_.join();
}

bool CLoopbackPrinters::Bind() {
  std::string problem;
  broadcast_socket_ = lxemu::CSocket::BindDatagram({0x7F000001, 0}, problem);
  other_port_ = lxemu::CSocket::BindDatagram({0x7F000002, 0}, problem);
  const std::uint16_t port = broadcast_socket_.LocalAddress().port;
  bool done = broadcast_socket_.IsOpen() && other_port_.IsOpen();
  std::uint32_t address = 0x7F000002;
  for (tagMember& member : members_) {
    member.socket = lxemu::CSocket::BindDatagram({address++, port}, problem);
    done = done && member.socket.IsOpen();
  }
  port_ = done ? port : 0;
  return done;
}

void CLoopbackPrinters::Run() {
  std::vector<lxemu::tagSocketWait> waits{{&broadcast_socket_, true}, {&other_port_, true}};
  for (const tagMember& member : members_) {
    waits.push_back({&member.socket, true});
  }
  std::array<char, 4096> buffer;
  while (!stop_) {
    lxemu::WaitForSockets(waits, 5);
    lxemu::tagSocketAddress from;
    while (true) {
      const lxemu::tagTransfer got = broadcast_socket_.ReceiveFrom(buffer, from);
      if (got.result != lxemu::SocketResult::kDone) {
        break;
      }
      {
        const std::lock_guard guard(lock_);
        host_ = from;
      }
      for (tagMember& member : members_) {
        Answer(member, {buffer.data(), got.size}, from);
      }
      ++broadcasts_;
    }
    for (tagMember& member : members_) {
      const lxemu::tagTransfer got = member.socket.ReceiveFrom(buffer, from);
      if (got.result == lxemu::SocketResult::kDone) {
        ++requests_;
        Answer(member, {buffer.data(), got.size}, from);
      }
    }
    // Requests that follow an answer from the other port: the first printer's.
    const lxemu::tagTransfer got = other_port_.ReceiveFrom(buffer, from);
    if (got.result == lxemu::SocketResult::kDone) {
      ++requests_;
      Answer(members_.front(), {buffer.data(), got.size}, from);
    }
  }
}

void CLoopbackPrinters::Answer(tagMember& member, std::string_view datagram,
                               const lxemu::tagSocketAddress& to) {
  if (silent_) {
    return;
  }
  for (const lxemu::tagSearchAnswer& answer : lxemu::AnswerSearch(datagram, member.identity, member.plan)) {
    (answer.from_other_port ? other_port_ : member.socket).SendTo(answer.bytes, to);
  }
}

void CLoopbackPrinters::SendToHost(std::string_view bytes) {
  const std::lock_guard guard(lock_);
  members_.front().socket.SendTo(bytes, host_);
}

}  // namespace tavira::test
