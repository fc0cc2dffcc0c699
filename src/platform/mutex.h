#pragma once

#include <mutex>

namespace tavira {

/**
 * A std::mutex that leaves nothing behind. The one of MinGW takes memory when it is first locked, an event when it is
 * first waited for, and gives neither back.
 * What does so here comes with <mutex> on both platforms.
 */
class CMutex final : public std::mutex {
 public:
  CMutex() = default;
  ~CMutex() { ::pthread_mutex_destroy(native_handle()); }
};

}  // namespace tavira
