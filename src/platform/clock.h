#pragma once

#include <cstdint>
#include <ctime>

namespace tavira {

/**
 * Time as the module sees it. Tests pass one that `Sleep` advances, so that a time-out costs no real time.
 */
class IClock {
 public:
  virtual ~IClock() = default;

  /** Milliseconds since some fixed moment; wraps after 2^32 ms. */
  virtual std::uint32_t TickCount() = 0;

  /** Blocks the calling thread for `ms` milliseconds. */
  virtual void Sleep(std::uint32_t ms) = 0;

  /** The host's local date and time. */
  virtual std::tm LocalTime() = 0;
};

}  // namespace tavira
