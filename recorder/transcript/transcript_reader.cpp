#include "transcript/transcript_reader.h"

#include <algorithm>

#include "transcript/format.h"
#include "transcript/line_cursor.h"

namespace recorder {
namespace {

bool FindKind(std::string_view name, CallKind& kind) {
  const auto found = std::find(kCallNames.begin(), kCallNames.end(), name);
  kind = static_cast<CallKind>(found - kCallNames.begin());
  return found != kCallNames.end();
}

class CReader {
 public:
  explicit CReader(tagTranscript& transcript) : transcript_(transcript) {}

  /// What is wrong with the line; empty when nothing is.
  std::string ReadLine(std::string_view line, bool is_terminated);

 private:
  std::string ReadCall(CLineCursor& cursor, tagCall call, bool is_terminated);
  std::string ReadRest(CLineCursor& cursor, const tagCall& place, bool is_terminated);
  std::string ReadEnding(CLineCursor& cursor, tagCall& call, bool is_terminated);

  tagTranscript& transcript_;
};

constexpr const char* kNotUnderstood = "not understood";

void ReadArguments(CLineCursor& cursor, tagCall& call) {
  switch (call.kind) {
    case CallKind::kInitialize:
      if (!cursor.Skip(kNull)) {
        tagPortRecord& record = call.description.emplace();
        record.port_type = cursor.Number<std::int32_t>();
        for (std::optional<std::u16string>& text : record.texts) {
          text = cursor.Text();
        }
        record.data_used = cursor.Number<std::int32_t>();
        record.data = cursor.Bytes(0).value_or("");
      }
      break;
    case CallKind::kSendData:
      call.size = cursor.Number<std::uint32_t>();
      call.bytes = cursor.Bytes(call.size);
      break;
    case CallKind::kReceiveData:
      call.has_buffer = cursor.Skip(kBuffer);
      if (!call.has_buffer) {
        cursor.Require(kNull);
      }
      call.room = cursor.Count();
      break;
    default:
      break;
  }
}

std::string CheckArguments(const tagCall& call) {
  constexpr std::size_t kMostData = 16;
  if (call.kind == CallKind::kSendData && call.bytes && call.bytes->size() != call.size) {
    return "says " + std::to_string(call.size) + " bytes and holds " + std::to_string(call.bytes->size());
  }
  if (call.description &&
      (call.description->data.size() > kMostData || call.description->data.ends_with('\0'))) {
    return "more data than a port description holds, or zeros at its end";
  }
  return "";
}

std::string CReader::ReadLine(std::string_view line, bool is_terminated) {
  CLineCursor cursor(line);
  if (cursor.IsAtEnd() || line.starts_with('#')) {
    return "";
  }
  tagCall call;
  call.line = transcript_.line_count;
  call.start = cursor.Time();
  call.thread = cursor.Number<std::uint32_t>();
  if (cursor.HasFailed()) {
    return kNotUnderstood;
  }
  if (cursor.Skip(kEndWord)) {
    transcript_.has_end = cursor.IsAtEnd();
    return cursor.IsAtEnd() ? "" : kNotUnderstood;
  }
  transcript_.has_end = false;
  const bool is_rest = cursor.Skip(kResumed);
  if (!FindKind(cursor.Word(), call.kind)) {
    return kNotUnderstood;
  }
  return is_rest ? ReadRest(cursor, call, is_terminated) : ReadCall(cursor, std::move(call), is_terminated);
}

std::string CReader::ReadCall(CLineCursor& cursor, tagCall call, bool is_terminated) {
  if (call.kind == CallKind::kLost) {
    call.lost = cursor.Number<std::uint64_t>();
    if (cursor.HasFailed() || !cursor.IsAtEnd() || call.lost == 0) {
      return kNotUnderstood;
    }
    transcript_.calls.push_back(std::move(call));
    return "";
  }
  ReadArguments(cursor, call);
  if (cursor.HasFailed()) {
    return kNotUnderstood;
  }
  if (std::string problem = CheckArguments(call); !problem.empty()) {
    return problem;
  }
  if (!HasSeenResult(call.kind)) {
    cursor.Require("=");
    cursor.Require("?");
    call.is_finished = true;
    if (cursor.HasFailed() || !cursor.IsAtEnd()) {
      return kNotUnderstood;
    }
  } else if (!cursor.Skip(kResumed) || !cursor.IsAtEnd()) {
    if (std::string problem = ReadEnding(cursor, call, is_terminated); !problem.empty()) {
      return problem;
    }
  }
  transcript_.calls.push_back(std::move(call));
  return "";
}

// The rest of a call belongs to the last one of its thread that has not come back.
std::string CReader::ReadRest(CLineCursor& cursor, const tagCall& place, bool is_terminated) {
  const auto begun =
      std::find_if(transcript_.calls.rbegin(), transcript_.calls.rend(), [&](const tagCall& call) {
        return call.thread == place.thread && call.kind == place.kind && !call.is_finished;
      });
  if (begun == transcript_.calls.rend() || !HasSeenResult(place.kind)) {
    return "the rest of a call that has not begun";
  }
  return ReadEnding(cursor, *begun, is_terminated);
}

// "= RESULT", what ReceiveData brought, and how long it took. At the end of the file it may be missing: what may
// be half a number is none.
std::string CReader::ReadEnding(CLineCursor& cursor, tagCall& call, bool is_terminated) {
  if (!is_terminated && cursor.IsAtEnd()) {
    return "";
  }
  cursor.Require("=");
  const auto result = cursor.Number<std::int32_t>();
  std::optional<std::uint32_t> count;
  std::optional<std::string> received;
  if (call.kind == CallKind::kReceiveData) {
    count = cursor.Count();
    if (result == 0 && call.has_buffer && call.room && count && !cursor.HasFailed()) {
      const std::size_t size = std::min(*call.room, *count);
      received = cursor.Bytes(size);
      if (!cursor.HasFailed() && (!received || received->size() != size)) {
        return "other than " + std::to_string(size) + " bytes received";
      }
    }
  }
  cursor.Require("took");
  const std::uint64_t duration = cursor.Time();
  if (cursor.HasFailed() || !cursor.IsAtEnd()) {
    return kNotUnderstood;
  }
  call.is_finished = true;
  call.result = result;
  call.duration = duration;
  if (call.kind == CallKind::kReceiveData) {
    call.count = count;
    call.bytes = std::move(received);
  }
  return "";
}

}  // namespace

std::optional<tagReadError> ReadTranscript(std::string_view text, tagTranscript& transcript) {
  transcript = {};
  CReader reader(transcript);
  while (!text.empty()) {
    const std::size_t feed = text.find('\n');
    const bool is_terminated = feed != text.npos;
    std::string_view line = text.substr(0, feed);
    text.remove_prefix(is_terminated ? feed + 1 : text.size());
    if (line.ends_with('\r')) {
      line.remove_suffix(1);
    }
    if (++transcript.line_count == 1) {
      if (line != kHeaderLine) {
        return tagReadError{1, "not \"" + std::string(kHeaderLine) + "\""};
      }
    } else if (std::string problem = reader.ReadLine(line, is_terminated); !problem.empty()) {
      if (is_terminated) {
        return tagReadError{transcript.line_count, std::move(problem)};
      }
      transcript.is_cut = true;
    }
  }
  return transcript.line_count == 0 ? std::optional(tagReadError{1, "empty"}) : std::nullopt;
}

}  // namespace recorder
