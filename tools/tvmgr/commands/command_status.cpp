#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "commands/commands.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/json_output.h"
#include "output/record_output.h"
#include "output/status_words.h"
#include "printer/manager_session.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

using Clock = std::chrono::steady_clock;

void Print(const tagGlobalOptions& global, std::uint32_t status, bool with_time,
           const std::string& problem = {}) {
  const tagStatusWords words = StatusWords(status);
  const std::string meaning = problem.empty() ? words.meaning : problem;
  const std::string time = with_time ? TimeStamp() : std::string();
  if (global.json) {
    SetJsonResult({{"time", with_time ? Json(time) : Json()},
                   {"status", status},
                   {"status_name", words.name},
                   {"meaning", meaning}});
    if (with_time) {
      WriteJsonLine();
    }
    return;
  }
  WriteOutput((with_time ? time + "  " : "") + words.name + " (" + meaning + ")\n");
}

int Watch(const tagGlobalOptions& global, const tagStatusOptions& options, const CManagerSession& session) {
  const auto to_duration = [](double seconds) {
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  };
  const auto end =
      options.duration_s ? Clock::now() + to_duration(*options.duration_s) : Clock::time_point::max();
  std::optional<std::pair<std::uint32_t, std::string>> shown;
  bool ever_answered = false;
  for (std::uint32_t poll = 1;; ++poll) {
    const auto next = Clock::now() + to_duration(options.interval_s);
    std::uint32_t status = TVMGR_STATUS_UNKNOWN;
    std::string problem;
    try {
      status = session.Status();
    } catch (const CFailure& error) {
      problem = error.what();  // a printer that is being switched on refuses connections for a while
    }
    ever_answered = ever_answered || status != TVMGR_STATUS_UNKNOWN;
    if (options.every_poll || shown != std::pair(status, problem)) {
      Print(global, status, true, problem);
      shown = std::pair(status, problem);
    }
    if (options.count && poll >= *options.count) {
      break;
    }
    const auto pause =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::min(next, end) - Clock::now());
    const auto pause_ms = static_cast<std::uint32_t>(std::max<std::int64_t>(pause.count(), 0));
    if (session.WaitOrInterrupted(pause_ms) || Clock::now() >= end) {
      break;
    }
  }
  return ever_answered ? kExitDone : kExitUnreachable;
}

}  // namespace

int RunStatus(const tagGlobalOptions& global, const tagStatusOptions& options) {
  if (!options.watch && (options.count || options.duration_s || options.every_poll)) {
    throw CUsageError("--count, --for and --every-poll belong to --watch");
  }
  const CManagerSession session(global, EPrinterUse::kStatus);
  if (options.watch) {
    return Watch(global, options, session);
  }
  const std::uint32_t status = session.Status();
  Print(global, status, false);
  return status == TVMGR_STATUS_UNKNOWN ? kExitUnreachable : kExitDone;
}

}  // namespace tvmgr
