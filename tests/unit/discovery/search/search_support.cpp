#include "search_support.h"

#include <array>

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
  for (std::uint64_t now = Now(); now < end; now = Now()) {  // one reading for both: time goes on between two
    if (speed_ == 0) {
      changed_.wait(guard);
    } else {
      changed_.wait_for(guard, std::chrono::microseconds((end - now) * 1000 / speed_ + 1));
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

CLoopbackPrinter::CLoopbackPrinter()
    : socket_(lxemu::CSocket::BindDatagram({0x7F000001, 0}, problem_)),
      thread_(&CLoopbackPrinter::Run, this) {}

CLoopbackPrinter::~CLoopbackPrinter() {
  stop_ = true;
  thread_.join();
}

void CLoopbackPrinter::Run() {
  lxemu::tagSearchIdentity identity;
  identity.name = "loopback";
  lxemu::tagSocketWait wait{&socket_, true};
  std::array<char, 4096> buffer;
  while (!stop_) {
    lxemu::WaitForSockets({&wait, 1}, 5);
    lxemu::tagSocketAddress from;
    const lxemu::tagTransfer got = socket_.ReceiveFrom(buffer, from);
    if (got.result != lxemu::SocketResult::kDone) {
      continue;
    }
    for (const auto& answer : lxemu::AnswerSearch({buffer.data(), got.size}, identity, {})) {
      socket_.SendTo(answer.bytes, from);
    }
    ++answered_;
  }
}

}  // namespace tavira::test
