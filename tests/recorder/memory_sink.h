#pragma once

#include <string>

#include "transcript/transcript_writer.h"

namespace recorder::test {

/// A disk that is full when `room` bytes are on it.
class CMemorySink : public ITranscriptSink {
 public:
  bool Append(std::string_view bytes) noexcept override {
    text.append(bytes.substr(0, room - std::min(room, text.size())));
    return text.size() < room;
  }
  bool CutTo(std::uint64_t size) noexcept override {
    text.resize(can_cut ? size : text.size());
    return can_cut;
  }

  std::string text;
  std::size_t room = std::string::npos;
  bool can_cut = true;
};

/// Makes the calls of a transcript once more, as one that comes from its host.
inline void WriteAgain(const tagTranscript& transcript, CTranscriptWriter& writer) {
  for (const tagCall& call : transcript.calls) {
    const auto* bytes = call.bytes ? reinterpret_cast<const std::uint8_t*>(call.bytes->data()) : nullptr;
    const std::uint32_t* count = call.count ? &*call.count : nullptr;
    CTranscriptWriter::tagOpenCall open;
    if (call.kind == CallKind::kInitialize) {
      const tagRawPortRecord raw = call.description ? RawOf(*call.description) : tagRawPortRecord{};
      open = writer.BeginInitialize(call.thread, call.description ? &raw : nullptr);
    } else if (call.kind == CallKind::kTerminate) {
      open = writer.BeginTerminate(call.thread);
    } else if (call.kind == CallKind::kSendData) {
      open = writer.BeginSend(call.thread, bytes, call.size);
    } else if (call.kind == CallKind::kReceiveData) {
      open = writer.BeginReceive(call.thread, call.has_buffer, call.room ? &*call.room : nullptr);
    } else if (call.kind != CallKind::kLost) {
      writer.WriteUnseen(call.thread, call.kind);
    }
    if (call.is_finished && call.kind == CallKind::kReceiveData) {
      writer.EndReceive(open, call.result, count, bytes,
                        call.bytes ? static_cast<std::uint32_t>(call.bytes->size()) : 0);
    } else if (call.is_finished && HasSeenResult(call.kind)) {
      writer.End(open, call.result);
    }
  }
}

}  // namespace recorder::test
