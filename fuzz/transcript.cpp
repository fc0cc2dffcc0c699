#include "transcript/transcript_reader.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "tests/recorder/memory_sink.h"
#include "transcript/replay.h"

namespace {

using recorder::CallKind;
using recorder::CReplay;
using recorder::tagCall;
using recorder::tagTranscript;

void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

/** The calls without their times and places. */
std::vector<tagCall> Essence(const tagTranscript& transcript) {
  std::vector<tagCall> calls;
  for (tagCall call : transcript.calls) {
    call.line = call.start = call.duration = 0;
    if (call.kind != CallKind::kLost) {
      calls.push_back(std::move(call));
    }
  }
  return calls;
}

/** What was read can be written, and says the same then. */
void CheckRoundTrip(const tagTranscript& transcript) {
  recorder::test::CMemorySink sink;
  std::uint64_t now = 0;
  recorder::CTranscriptWriter writer(sink, [&] { return ++now; });
  writer.WriteNote("again");
  recorder::test::WriteAgain(transcript, writer);
  tagTranscript again;
  Require(!ReadTranscript(sink.text, again) && !again.is_cut);
  Require(Essence(again) == Essence(transcript));
}

std::int32_t MakeCall(CReplay& replay, const tagCall& call) {
  const auto* bytes = call.bytes ? reinterpret_cast<const std::uint8_t*>(call.bytes->data()) : nullptr;
  switch (call.kind) {
    case CallKind::kInitialize:
      return replay.Initialize();
    case CallKind::kTerminate:
      return replay.Terminate();
    case CallKind::kSendData:
      return replay.SendData(bytes, call.bytes ? call.size : 0);
    case CallKind::kReceiveData: {
      // Never more bytes than there is room for: the place behind them is the sanitizer's.
      constexpr std::uint32_t kMost = 4096;
      std::uint32_t count = std::min(call.room.value_or(0), kMost);
      std::vector<std::uint8_t> buffer(std::max(count, 1U));
      return replay.ReceiveData(call.has_buffer ? buffer.data() : nullptr, call.room ? &count : nullptr);
    }
    default:
      return replay.CallUnseen(call.kind);
  }
}

/** A host that does what the recorded one did gets what that one got, up to the first call that nobody can play. */
void CheckReplay(const tagTranscript& transcript) {
  CReplay strict(transcript, recorder::ReplayOrder::kStrict);
  CReplay by_command(transcript, recorder::ReplayOrder::kByCommand);
  bool is_playable = true;
  for (const tagCall& call : transcript.calls) {
    is_playable = is_playable && call.is_finished && call.room.value_or(0) <= 4096;
    const std::int32_t result = MakeCall(strict, call);
    Require(!is_playable || (strict.Failure().empty() && result == call.result));
    MakeCall(by_command, call);
  }
  Require(!strict.Report().empty() && !by_command.Report().empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  tagTranscript transcript;
  const auto error = ReadTranscript(text, transcript);
  Require(!error || (error->line >= 1 && error->line <= transcript.line_count + 1 && !error->reason.empty()));
  CheckRoundTrip(transcript);
  CheckReplay(transcript);
  return 0;
}
