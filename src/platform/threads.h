#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace tavira {

/** A thread that runs, or has ended. The end of its life waits for the thread's, without a time limit. */
class IThread {
 public:
  virtual ~IThread() = 0;
};
inline IThread::~IThread() = default;

/**
 * Starts threads. While one runs, the code of this module stays in memory, also when the host unloads the module
 * meanwhile. Any thread may call at any time.
 */
class IThreads {
 public:
  virtual ~IThreads() = default;

  /**
   * Runs `body`, which must not throw, on a thread of its own; returns when that has begun. Null when there is no
   * thread to be had: `error` then receives the system's number. Throws std::bad_alloc.
   */
  virtual std::unique_ptr<IThread> Start(std::function<void()> body, std::uint32_t& error) = 0;
};

/** The threads of the platform this program was built for. */
std::unique_ptr<IThreads> MakeThreads();

}  // namespace tavira
