#include "win32/recording.h"

#include <algorithm>
#include <chrono>

#include "win32/environment.h"

namespace recorder {
namespace {

MicrosecondClock ClockFromNow() {
  using std::chrono::duration_cast;
  using std::chrono::microseconds;
  using std::chrono::steady_clock;
  return [start = steady_clock::now()] {
    return static_cast<std::uint64_t>(duration_cast<microseconds>(steady_clock::now() - start).count());
  };
}

std::filesystem::path LibraryFile(HMODULE self) {
  const std::wstring chosen = Environment(L"TAVIRA_RECORD_LIBRARY");
  return chosen.empty() ? ModuleFile(self).parent_path() / "Ferrolink_real.dll" : FullPath(chosen);
}

// What the recorder does around a call: no error of it reaches the host, not even as the thread's last one.
template <typename Work>
void Unnoticed(Work work) {
  const CKeptError kept;
  try {
    work();
  } catch (...) {
  }
}

}  // namespace

CRecording::CRecording(HMODULE self) : writer_(file_, ClockFromNow()) {
  if (!library_.Load(LibraryFile(self), self)) {
    Introduce();
  }
}

void CRecording::WriteEnd() {
  Unnoticed([&] {
    if (is_introduced_) {
      writer_.WriteEnd(GetCurrentThreadId());
    }
  });
}

std::int32_t CRecording::Initialize(const tagRawPortRecord* record_or_null) {
  CTranscriptWriter::tagOpenCall call;
  Unnoticed([&] {
    Introduce();
    call = writer_.BeginInitialize(GetCurrentThreadId(), record_or_null);
  });
  const std::int32_t result = library_.initialize(record_or_null);
  Unnoticed([&] { writer_.End(call, result); });
  return result;
}

std::int32_t CRecording::Terminate() {
  CTranscriptWriter::tagOpenCall call;
  Unnoticed([&] {
    Introduce();
    call = writer_.BeginTerminate(GetCurrentThreadId());
  });
  const std::int32_t result = library_.terminate();
  Unnoticed([&] { writer_.End(call, result); });
  return result;
}

std::int32_t CRecording::SendData(const std::uint8_t* bytes_or_null, std::uint32_t size) {
  CTranscriptWriter::tagOpenCall call;
  Unnoticed([&] {
    Introduce();
    call = writer_.BeginSend(GetCurrentThreadId(), bytes_or_null, size);
  });
  const std::int32_t result = library_.send_data(bytes_or_null, size);
  Unnoticed([&] { writer_.End(call, result); });
  return result;
}

std::int32_t CRecording::ReceiveData(std::uint8_t* buffer_or_null, std::uint32_t* count_or_null) {
  CTranscriptWriter::tagOpenCall call;
  std::uint32_t room = 0;
  Unnoticed([&] {
    Introduce();
    room = count_or_null == nullptr ? 0 : *count_or_null;
    call = writer_.BeginReceive(GetCurrentThreadId(), buffer_or_null != nullptr, count_or_null);
  });
  const std::int32_t result = library_.receive_data(buffer_or_null, count_or_null);
  Unnoticed([&] {
    const bool has_bytes = result == 0 && buffer_or_null != nullptr && count_or_null != nullptr;
    writer_.EndReceive(call, result, count_or_null, has_bytes ? buffer_or_null : nullptr,
                       has_bytes ? std::min(room, *count_or_null) : 0);
  });
  return result;
}

void CRecording::NoteUnseen(CallKind kind) {
  Unnoticed([&] {
    Introduce();
    writer_.WriteUnseen(GetCurrentThreadId(), kind);
  });
}

// Who recorded what, in front of the first line.
void CRecording::Introduce() {
  if (is_introduced_.exchange(true)) {
    return;
  }
  try {
    writer_.WriteNote("recorded " + UtcNow() + ", host " + Utf8(ModuleFile(nullptr).filename().wstring()) +
                      ", process " + std::to_string(GetCurrentProcessId()) + ", " + library_.Description());
  } catch (...) {
    // Without memory there is no note, but the lines of the calls need none.
  }
}

}  // namespace recorder
