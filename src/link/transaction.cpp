#include "link/transaction.h"

#include "link/frame.h"

namespace tavira {
namespace {

constexpr std::uint32_t kPollIntervalMs = 100;

/** Waits for the first announcement; `count` stays 0 when none comes in time. */
std::int32_t WaitForAnswer(CPortLink& link, IClock& clock, std::uint32_t timeout_ms, std::uint32_t& count) {
  count = 0;
  std::uint64_t waited = 0;  // wider than the time-out, which may be the largest number of 32 bits
  std::uint32_t last_reading = clock.TickCount();
  while (waited < timeout_ms) {
    clock.Sleep(kPollIntervalMs);
    const std::int32_t result = link.WaitingBytes(count);
    if (result != TVMGR_OK || count != 0) {
      return result;
    }
    // Differences in 32 bits, so that a wrap of the tick count during the wait does no harm.
    const std::uint32_t now = clock.TickCount();
    waited += now - last_reading;
    last_reading = now;
  }
  return TVMGR_OK;
}

}  // namespace

std::int32_t SendAndReceive(CPortLink& link, IClock& clock, std::string_view frame,
                            std::uint32_t timeout_ms) {
  const std::int32_t sent = link.Send(frame);
  if (sent != TVMGR_OK) {
    return sent;
  }
  link.ReceiveBuffer().clear();
  std::uint32_t count = 0;
  const std::int32_t waited = WaitForAnswer(link, clock, timeout_ms, count);
  if (waited != TVMGR_OK || count == 0) {
    return waited;
  }
  return link.Receive(count);
}

std::int32_t RunTransaction(CPortLink& link, IClock& clock, const tagPortDescription* description,
                            std::uint32_t timeout_ms) {
  if (link.SendBuffer().empty()) {
    return TVMGR_BAD_ARGUMENT;
  }
  const std::int32_t opened = link.Open(description);
  if (opened != TVMGR_OK) {
    return opened;
  }
  const CPortCloser closer(link);
  link.SendBuffer() = FrameCommands(link.SendBuffer());
  return SendAndReceive(link, clock, link.SendBuffer(), timeout_ms);
}

}  // namespace tavira
