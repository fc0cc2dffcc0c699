#include "transcript/transcript_writer.h"

#include <algorithm>
#include <charconv>

#include "transcript/escape.h"
#include "transcript/format.h"

namespace recorder {

void CTranscriptWriter::WriteNote(std::string_view text) {
  const std::lock_guard lock(mutex_);
  BeginPart(0);
  Put("# ");
  Put(text);
  Put("\n");
  EndPart(part_);
}

CTranscriptWriter::tagOpenCall CTranscriptWriter::BeginInitialize(std::uint32_t thread,
                                                                  const tagRawPortRecord* record_or_null) {
  const std::lock_guard lock(mutex_);
  BeginLine(thread, CallKind::kInitialize);
  if (record_or_null == nullptr) {
    Put(" ");
    Put(kNull);
  } else {
    PutNumber(record_or_null->port_type);
    for (const char16_t* text : record_or_null->texts) {
      PutText(text);
    }
    PutNumber(record_or_null->data_used);
    const std::string_view data = DataOf(*record_or_null);
    PutBytes(data.data(), data.size());
  }
  return LeaveOpen(thread, CallKind::kInitialize);
}

CTranscriptWriter::tagOpenCall CTranscriptWriter::BeginTerminate(std::uint32_t thread) {
  const std::lock_guard lock(mutex_);
  BeginLine(thread, CallKind::kTerminate);
  return LeaveOpen(thread, CallKind::kTerminate);
}

CTranscriptWriter::tagOpenCall CTranscriptWriter::BeginSend(std::uint32_t thread,
                                                            const std::uint8_t* bytes_or_null,
                                                            std::uint32_t size) {
  const std::lock_guard lock(mutex_);
  BeginLine(thread, CallKind::kSendData);
  PutNumber(size);
  PutBytes(bytes_or_null, size);
  return LeaveOpen(thread, CallKind::kSendData);
}

CTranscriptWriter::tagOpenCall CTranscriptWriter::BeginReceive(std::uint32_t thread, bool has_buffer,
                                                               const std::uint32_t* count_or_null) {
  const std::lock_guard lock(mutex_);
  BeginLine(thread, CallKind::kReceiveData);
  Put(" ");
  Put(has_buffer ? kBuffer : kNull);
  PutCount(count_or_null);
  return LeaveOpen(thread, CallKind::kReceiveData);
}

void CTranscriptWriter::End(const tagOpenCall& call, std::int32_t result) {
  const std::uint64_t now = now_();
  const std::lock_guard lock(mutex_);
  if (call.number != 0) {
    BeginEnd(call, result);
    EndEnd(call, now);
  }
}

void CTranscriptWriter::EndReceive(const tagOpenCall& call, std::int32_t result,
                                   const std::uint32_t* count_or_null, const std::uint8_t* bytes_or_null,
                                   std::uint32_t size) {
  const std::uint64_t now = now_();
  const std::lock_guard lock(mutex_);
  if (call.number != 0) {
    BeginEnd(call, result);
    PutCount(count_or_null);
    if (bytes_or_null != nullptr) {
      PutBytes(bytes_or_null, size);
    }
    EndEnd(call, now);
  }
}

void CTranscriptWriter::WriteUnseen(std::uint32_t thread, CallKind kind) {
  const std::lock_guard lock(mutex_);
  BeginLine(thread, kind);
  Put(" = ?\n");
  lost_ += EndPart(part_) ? 0U : 1U;
}

void CTranscriptWriter::WriteEnd(std::uint32_t thread) {
  const std::unique_lock lock(mutex_, std::try_to_lock);
  if (lock) {
    BeginPart(thread);
    PutTime(now_());
    PutNumber(thread);
    Put(" ");
    Put(kEndWord);
    Put("\n");
    EndPart(part_);
  }
}

// What must stand in front of the next line: the end of one that waits, the header, what was lost.
void CTranscriptWriter::BeginPart(std::uint32_t thread) {
  has_failed_ = false;
  used_ = 0;
  part_ = written_;
  if (open_number_ != 0) {
    Put(kInterrupted);
    Put("\n");
  }
  if (!has_header_) {
    Put(kHeaderLine);
    Put("\n");
  }
  if (lost_ != 0) {
    PutTime(now_());
    PutNumber(thread);
    Put(" ");
    Put(CallName(CallKind::kLost));
    PutNumber(static_cast<std::int64_t>(lost_));
    Put("\n");
  }
}

void CTranscriptWriter::BeginLine(std::uint32_t thread, CallKind kind) {
  BeginPart(thread);
  line_ = Position();
  PutTime(now_());
  PutNumber(thread);
  Put(" ");
  Put(CallName(kind));
}

// True when the part has come to the sink; otherwise nothing behind `cut_to` is left of it.
bool CTranscriptWriter::EndPart(std::uint64_t cut_to) {
  Flush();
  if (!has_failed_) {
    has_header_ = true;
    lost_ = 0;
    open_number_ = 0;
    return true;
  }
  is_broken_ = is_broken_ || !sink_.CutTo(cut_to);
  written_ = cut_to;
  return false;
}

CTranscriptWriter::tagOpenCall CTranscriptWriter::LeaveOpen(std::uint32_t thread, CallKind kind) {
  tagOpenCall call{kind, thread, 0, 0};
  if (EndPart(part_)) {
    call.number = open_number_ = ++last_number_;
    open_line_ = line_;
  } else {
    ++lost_;
  }
  call.entered = now_();
  return call;
}

void CTranscriptWriter::BeginEnd(const tagOpenCall& call, std::int32_t result) {
  if (call.number == open_number_) {
    has_failed_ = false;
    used_ = 0;
    part_ = open_line_;
  } else {
    BeginPart(call.thread);
    PutTime(now_());
    PutNumber(call.thread);
    Put(" ");
    Put(kResumed);
    Put(" ");
    Put(CallName(call.kind));
  }
  Put(" =");
  PutNumber(result);
}

void CTranscriptWriter::EndEnd(const tagOpenCall& call, std::uint64_t now) {
  Put(" took ");
  PutTime(now - call.entered);
  Put("\n");
  const std::uint64_t lost = call.number == open_number_ ? lost_ : 0;
  if (!EndPart(part_)) {
    ++lost_;
    open_number_ = call.number == open_number_ ? 0 : open_number_;
  } else {
    lost_ = lost;
  }
}

void CTranscriptWriter::Put(std::string_view text) {
  for (std::size_t done = 0; done < text.size();) {
    const std::size_t size = std::min(text.size() - done, sizeof buffer_ / 2);
    text.copy(Room(size), size, done);
    used_ += size;
    done += size;
  }
}

void CTranscriptWriter::PutNumber(std::int64_t number) {
  constexpr std::size_t kLongest = 24;
  char* place = Room(kLongest);
  *place = ' ';
  used_ += static_cast<std::size_t>(std::to_chars(place + 1, place + kLongest, number).ptr - place);
}

void CTranscriptWriter::PutTime(std::uint64_t microseconds) {
  constexpr std::size_t kLongest = 32;
  constexpr int kDigits = 6;
  char* place = Room(kLongest);
  char* end = std::to_chars(place, place + kLongest, microseconds / kMicrosecondsPerSecond).ptr;
  *end++ = '.';
  std::uint64_t rest = microseconds % kMicrosecondsPerSecond;
  for (int i = kDigits - 1; i >= 0; --i) {
    end[i] = static_cast<char>('0' + rest % 10);
    rest /= 10;
  }
  used_ += static_cast<std::size_t>(end + kDigits - place);
}

void CTranscriptWriter::PutCount(const std::uint32_t* count_or_null) {
  if (count_or_null == nullptr) {
    Put(" ");
    Put(kNull);
  } else {
    PutNumber(*count_or_null);
  }
}

void CTranscriptWriter::PutBytes(const void* bytes, std::size_t size) {
  Put(" ");
  if (bytes == nullptr) {
    Put(kNull);
    return;
  }
  Put("\"");
  for (const char byte : std::string_view(static_cast<const char*>(bytes), size)) {
    used_ += EscapeByte(byte, Room(kLongestEscape));
  }
  Put("\"");
}

void CTranscriptWriter::PutText(const char16_t* text_or_null) {
  Put(" ");
  if (text_or_null == nullptr) {
    Put(kNull);
    return;
  }
  Put("\"");
  for (std::size_t i = 0; i < kLongestText && text_or_null[i] != 0; ++i) {
    used_ += EscapeUnit(text_or_null[i], Room(kLongestEscape));
  }
  Put("\"");
}

char* CTranscriptWriter::Room(std::size_t size) {
  if (sizeof buffer_ - used_ < size) {
    Flush();
  }
  return buffer_ + used_;
}

void CTranscriptWriter::Flush() {
  if (is_broken_) {
    has_failed_ = true;
  }
  if (!has_failed_ && sink_.Append({buffer_, used_})) {
    written_ += used_;
  } else {
    has_failed_ = true;
  }
  used_ = 0;
}

}  // namespace recorder
