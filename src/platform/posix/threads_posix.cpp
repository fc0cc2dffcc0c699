#include "platform/threads.h"

#include <atomic>
#include <system_error>
#include <thread>

namespace tavira {
namespace {

class CPosixThread final : public IThread {
 public:
  explicit CPosixThread(std::function<void()> body)
      : body_(std::move(body)), thread_([this] {
          runs_ = true;
          runs_.notify_one();
          body_();
        }) {
    runs_.wait(false);
  }
  ~CPosixThread() override { thread_.join(); }
  CPosixThread(const CPosixThread&) = delete;
  CPosixThread& operator=(const CPosixThread&) = delete;

 private:
  const std::function<void()> body_;
  std::atomic<bool> runs_{false};
  std::thread thread_;  // last: it uses the others
};

class CPosixThreads final : public IThreads {
 public:
  std::unique_ptr<IThread> Start(std::function<void()> body, std::uint32_t& error) override {
    try {
      return std::make_unique<CPosixThread>(std::move(body));
    } catch (const std::system_error& failure) {
      error = static_cast<std::uint32_t>(failure.code().value());
      return nullptr;
    }
  }
};

}  // namespace

std::unique_ptr<IThreads> MakeThreads() {
  return std::make_unique<CPosixThreads>();
}

}  // namespace tavira
