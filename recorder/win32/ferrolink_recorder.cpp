// The entry points, and what becomes of them: a recording or a replay. ClearReceiveData and GetPortComIndex
// stand in pass_on.cpp.
#include <windows.h>

#include <atomic>
#include <mutex>

#include "win32/environment.h"
#include "win32/player.h"
#include "win32/recording.h"

namespace recorder {
namespace {

// Not owned by anything that ends by itself: at the end of a process other libraries may still call us.
HMODULE own_module = nullptr;
CPlayer* player = nullptr;        // either this one
CRecording* recording = nullptr;  // or this one
std::atomic<bool> has_started = false;
std::mutex start_mutex;

bool CanWork() {
  return player != nullptr || (recording != nullptr && recording->Library().IsReady());
}

bool Start() {
  const CKeptError kept;
  const std::lock_guard lock(start_mutex);
  if (!has_started) {
    try {
      if (const std::wstring transcript = Environment(L"TAVIRA_REPLAY"); !transcript.empty()) {
        player = new CPlayer(FullPath(transcript), FullPath(Environment(L"TAVIRA_REPLAY_REPORT")));
      } else {
        recording = new CRecording(own_module);
      }
    } catch (...) {
      // Out of memory: the host is told that there is no library.
    }
    has_started = true;
  }
  return CanWork();
}

// A host that is linked against the library has it loaded before its other libraries are ready: then the real one
// waits for the first call.
bool IsReady() {
  return has_started ? CanWork() : Start();
}

std::int32_t ReturnFailure() {
  return kRecorderFailure;
}

std::int32_t PlayClear() {
  return player->Play([](CReplay& replay) { return replay.CallUnseen(CallKind::kClearReceiveData); });
}

std::int32_t PlayIndex() {
  return player->Play([](CReplay& replay) { return replay.CallUnseen(CallKind::kGetPortComIndex); });
}

}  // namespace
}  // namespace recorder

using recorder::CallKind;
using recorder::CReplay;
using recorder::IsReady;
using recorder::kRecorderFailure;
using recorder::player;
using recorder::recording;

extern "C" {

// Where pass_on.cpp jumps to.
void* RecorderClearTarget() {
  if (!IsReady()) {
    return reinterpret_cast<void*>(&recorder::ReturnFailure);
  }
  if (player != nullptr) {
    return reinterpret_cast<void*>(&recorder::PlayClear);
  }
  recording->NoteUnseen(CallKind::kClearReceiveData);
  return recording->Library().clear_receive_data;
}

void* RecorderIndexTarget() {
  if (!IsReady()) {
    return reinterpret_cast<void*>(&recorder::ReturnFailure);
  }
  if (player != nullptr) {
    return reinterpret_cast<void*>(&recorder::PlayIndex);
  }
  recording->NoteUnseen(CallKind::kGetPortComIndex);
  return recording->Library().get_port_com_index;
}

std::int32_t Initialize(const recorder::tagRawPortRecord* record) {
  if (!IsReady()) {
    return kRecorderFailure;
  }
  return player != nullptr ? player->Play([](CReplay& replay) { return replay.Initialize(); })
                           : recording->Initialize(record);
}

std::int32_t Terminate() {
  if (!IsReady()) {
    return kRecorderFailure;
  }
  return player != nullptr ? player->Play([](CReplay& replay) { return replay.Terminate(); })
                           : recording->Terminate();
}

std::int32_t SendData(const std::uint8_t* bytes, std::uint32_t size) {
  if (!IsReady()) {
    return kRecorderFailure;
  }
  return player != nullptr ? player->Play([&](CReplay& replay) { return replay.SendData(bytes, size); })
                           : recording->SendData(bytes, size);
}

std::int32_t ReceiveData(std::uint8_t* buffer, std::uint32_t* count) {
  if (!IsReady()) {
    return kRecorderFailure;
  }
  return player != nullptr ? player->Play([&](CReplay& replay) { return replay.ReceiveData(buffer, count); })
                           : recording->ReceiveData(buffer, count);
}

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* reserved) {
  const bool is_whole_process = reserved != nullptr;  // linked at its start, or its end
  if (reason == DLL_PROCESS_ATTACH) {
    recorder::own_module = module;
    // A library that is missing is missing for the host as it would be without the recorder. Nothing of the host's
    // waits for its initialisation, so loading the real library here is like loading it in our place.
    return is_whole_process || recorder::Start() ? TRUE : FALSE;
  }
  if (reason == DLL_PROCESS_DETACH) {
    if (player != nullptr) {
      player->Finish();
    }
    if (recording != nullptr) {
      recording->WriteEnd();
    }
    // At the end of a process the other threads were ended wherever they were; the system takes care of the rest.
    if (!is_whole_process) {
      delete player;
      delete recording;
    }
  }
  return TRUE;
}

}  // extern "C"
