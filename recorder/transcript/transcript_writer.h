#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string_view>
#include <utility>

#include "transcript/call.h"
#include "transcript/port_record.h"

namespace recorder {

/// Where a transcript goes. No call throws.
class ITranscriptSink {
 public:
  virtual ~ITranscriptSink() = default;
  /// Adds bytes at the end; false when not all of them could be written.
  virtual bool Append(std::string_view bytes) noexcept = 0;
  /// Cuts off all behind the first `size` bytes; false when that failed.
  virtual bool CutTo(std::uint64_t size) noexcept = 0;
};

/// Microseconds since the recording began.
using MicrosecondClock = std::function<std::uint64_t()>;

/// Writes a line for each call: its beginning before the call goes to the library, its end when it is back,
/// so that a call that never returns stands in the transcript as well. What the sink does not take is lost,
/// and the next line that it takes says how much. Threads may write at the same time. Nothing is allocated.
class CTranscriptWriter {
 public:
  /// What a call keeps from its beginning to its end.
  struct tagOpenCall {
    CallKind kind = CallKind::kLost;
    std::uint32_t thread = 0;
    std::uint64_t entered = 0;  ///< us, when the library was called
    std::uint64_t number = 0;   ///< 0: its beginning was lost
  };

  /// The sink is empty, outlives the writer, and belongs to it alone.
  CTranscriptWriter(ITranscriptSink& sink, MicrosecondClock now) : sink_(sink), now_(std::move(now)) {}

  /// A line for people, without a line feed in it.
  void WriteNote(std::string_view text);

  tagOpenCall BeginInitialize(std::uint32_t thread, const tagRawPortRecord* record_or_null);
  tagOpenCall BeginTerminate(std::uint32_t thread);
  tagOpenCall BeginSend(std::uint32_t thread, const std::uint8_t* bytes_or_null, std::uint32_t size);
  tagOpenCall BeginReceive(std::uint32_t thread, bool has_buffer, const std::uint32_t* count_or_null);
  void End(const tagOpenCall& call, std::int32_t result);
  /// With what the buffer holds now; null when there is nothing to show.
  void EndReceive(const tagOpenCall& call, std::int32_t result, const std::uint32_t* count_or_null,
                  const std::uint8_t* bytes_or_null, std::uint32_t size);
  /// A call whose arguments and result stay unseen.
  void WriteUnseen(std::uint32_t thread, CallKind kind);
  /// The last line of a recording that was not broken off. Writes nothing when another thread is just writing:
  /// at the end of a process that thread may be gone.
  void WriteEnd(std::uint32_t thread);

 private:
  void BeginPart(std::uint32_t thread);
  void BeginLine(std::uint32_t thread, CallKind kind);
  bool EndPart(std::uint64_t cut_to);
  tagOpenCall LeaveOpen(std::uint32_t thread, CallKind kind);
  void BeginEnd(const tagOpenCall& call, std::int32_t result);
  void EndEnd(const tagOpenCall& call, std::uint64_t now);

  void Put(std::string_view text);
  void PutNumber(std::int64_t number);
  void PutTime(std::uint64_t microseconds);
  void PutCount(const std::uint32_t* count_or_null);
  void PutBytes(const void* bytes, std::size_t size);
  void PutText(const char16_t* text_or_null);
  char* Room(std::size_t size);
  void Flush();
  std::uint64_t Position() const { return written_ + used_; }

  std::mutex mutex_;
  ITranscriptSink& sink_;
  MicrosecondClock now_;
  std::uint64_t last_number_ = 0;
  std::uint64_t open_number_ = 0;  // the call whose line waits for its end at the end of the file; 0: none
  std::uint64_t open_line_ = 0;    // where that line begins
  std::uint64_t part_ = 0;         // where what is being written begins; it comes whole or not at all
  std::uint64_t line_ = 0;         // where the line in it begins
  std::uint64_t written_ = 0;      // bytes in the sink
  std::uint64_t lost_ = 0;         // calls that the transcript does not tell of yet
  bool has_header_ = false;
  bool has_failed_ = false;  // in this part
  bool is_broken_ = false;   // half a line could not be taken away: nothing more is written
  std::size_t used_ = 0;
  char buffer_[32 * 1024];
};

}  // namespace recorder
