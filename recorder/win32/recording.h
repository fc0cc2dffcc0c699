#pragma once

#include <windows.h>

#include <atomic>

#include "transcript/transcript_writer.h"
#include "win32/real_library.h"
#include "win32/transcript_file.h"

namespace recorder {

/// The library that a host meant to load, and the transcript of what passes on the way there and back.
/// Nothing that happens to the transcript reaches the host.
class CRecording {
 public:
  /// Loads the library: TAVIRA_RECORD_LIBRARY, else Ferrolink_real.dll beside the recorder.
  explicit CRecording(HMODULE self);

  CRealLibrary& Library() { return library_; }
  void WriteEnd();

  std::int32_t Initialize(const tagRawPortRecord* record_or_null);
  std::int32_t Terminate();
  std::int32_t SendData(const std::uint8_t* bytes_or_null, std::uint32_t size);
  std::int32_t ReceiveData(std::uint8_t* buffer_or_null, std::uint32_t* count_or_null);
  /// Notes a call that is then passed on by a jump.
  void NoteUnseen(CallKind kind);

 private:
  void Introduce();

  CTranscriptFile file_;
  CTranscriptWriter writer_;
  CRealLibrary library_;
  std::atomic<bool> is_introduced_ = false;
};

}  // namespace recorder
