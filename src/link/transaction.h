#pragma once

#include <cstdint>
#include <string_view>

#include "link/port_link.h"
#include "platform/clock.h"

namespace tavira {

/** Time-out of every operation that states no other: how long to wait for the first answer bytes, in ms. */
inline constexpr std::uint32_t kDefaultTimeoutMs = 60000;
/** Time-out of the status exchange and of the prefix operations, in ms. */
inline constexpr std::uint32_t kShortTimeoutMs = 3000;

/** Closes an opened port at the end of its scope: exactly once, whatever happens between. */
class CPortCloser {
 public:
  explicit CPortCloser(CPortLink& link) : link_(link) {}
  ~CPortCloser() { link_.Close(); }
  CPortCloser(const CPortCloser&) = delete;
  CPortCloser& operator=(const CPortCloser&) = delete;

 private:
  CPortLink& link_;
};

/**
 * Sends one frame over an open port and reads the answer into the link's receive buffer; leaves the port
 * open.
 *
 * Polls every 100 ms, first after 100 ms, until bytes are announced or `timeout_ms` have passed (0: does not
 * read). 0 also when nothing came (the receive buffer is then empty); −1 library incomplete; the library's
 * own code. Throws std::bad_alloc when the answer cannot be held.
 */
std::int32_t SendAndReceive(CPortLink& link, IClock& clock, std::string_view frame, std::uint32_t timeout_ms);

/**
 * One complete exchange: opens the port, sends the send buffer framed (the buffer then holds the frame),
 * reads the answer, closes the port. −7 nothing to send, else as CPortLink::Open and SendAndReceive.
 * Blocks up to `timeout_ms` + 100 ms.
 */
std::int32_t RunTransaction(CPortLink& link, IClock& clock, const tagPortDescription* description,
                            std::uint32_t timeout_ms);

}  // namespace tavira
