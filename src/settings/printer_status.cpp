#include "settings/printer_status.h"

#include <algorithm>
#include <array>

#include "command/answer_parser.h"
#include "command/fixed_commands.h"
#include "command/text.h"
#include "link/frame.h"

namespace tavira {
namespace {

constexpr std::uint32_t kBusyPollIntervalMs = 1000;
constexpr std::string_view kIdleState = "IL";
constexpr std::array<std::string_view, 4> kBusyStates{"SP", "PR", "CL", "OF"};

bool IsBusy(std::string_view state) {
  return std::any_of(kBusyStates.begin(), kBusyStates.end(),
                     [state](std::string_view busy) { return EqualsIgnoringCase(state, busy); });
}

std::uint32_t Classify(std::string_view state) {
  if (state.empty()) {
    return TVMGR_STATUS_UNKNOWN;
  }
  if (EqualsIgnoringCase(state, kIdleState)) {
    return TVMGR_STATUS_IDLE;
  }
  return IsBusy(state) ? TVMGR_STATUS_BUSY : TVMGR_STATUS_OTHER;
}

}  // namespace

std::int32_t CPrinterStatus::Get(std::uint32_t* status) {
  if (!port_.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  if (status == nullptr) {
    return TVMGR_BAD_ARGUMENT;
  }
  *status = TVMGR_STATUS_UNKNOWN;
  const tagPortDescription description = port_.Link().ExchangeDescription();
  std::int32_t result = port_.Link().Open(&description);
  if (result != TVMGR_OK) {
    return result;
  }
  const CPortCloser closer(port_.Link());
  std::string state;
  result = QueryOpenPort(state);
  if (result == TVMGR_OK) {
    *status = Classify(state);
  }
  return result;
}

std::int32_t CPrinterStatus::WaitWhileBusy(std::uint32_t timeout_ms) {
  if (!port_.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  const std::int32_t opened = port_.Link().Open(nullptr);
  if (opened != TVMGR_OK) {
    return opened;
  }
  const CPortCloser closer(port_.Link());
  return PollWhileBusy(timeout_ms);
}

std::int32_t CPrinterStatus::PollWhileBusy(std::uint32_t timeout_ms) {
  IClock& clock = port_.Clock();
  std::uint32_t waited = 0;
  std::uint32_t last_reading = clock.TickCount();
  while (waited < timeout_ms) {
    std::string state;
    const std::int32_t result = QueryOpenPort(state);
    if (result != TVMGR_OK || !IsBusy(state)) {
      return result;
    }
    clock.Sleep(kBusyPollIntervalMs);
    const std::uint32_t now = clock.TickCount();
    waited += now - last_reading;
    last_reading = now;
  }
  return TVMGR_OK;
}

std::int32_t CPrinterStatus::QueryOpenPort(std::string& state) {
  const std::int32_t result =
      SendAndReceive(port_.Link(), port_.Clock(), FrameCommands(kStatusQuery), kShortTimeoutMs);
  if (result == TVMGR_OK) {
    state = FindAnswerValue(port_.Answer(), kStatusAnswerHead);
  }
  return result;
}

}  // namespace tavira
