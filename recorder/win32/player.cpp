#include "win32/player.h"

#include <fstream>
#include <utility>

#include "transcript/transcript_reader.h"
#include "win32/environment.h"
#include "win32/mapped_file.h"

namespace recorder {

CPlayer::CPlayer(std::filesystem::path transcript, std::filesystem::path report)
    : transcript_(std::move(transcript)), report_(std::move(report)) {}

void CPlayer::Finish() noexcept {
  // At the end of a process the thread that holds the lock may be gone.
  const std::unique_lock lock(mutex_, std::try_to_lock);
  if (!lock) {
    return;
  }
  try {
    Read();
    const bool is_strict = replay_ && replay_->Order() == ReplayOrder::kStrict;
    if (is_strict && !replay_->IsComplete() && replay_->Failure().empty()) {
      Tell(replay_->Report());
    }
    Report(replay_ ? replay_->Report() : "failed: " + refusal_);
  } catch (...) {
  }
}

void CPlayer::Read() {
  if (std::exchange(was_read_, true)) {
    return;
  }
  const std::wstring order = Environment(L"TAVIRA_REPLAY_ORDER");
  if (!order.empty() && order != L"strict" && order != L"command") {
    return Refuse(kRecorderFailure, "TAVIRA_REPLAY_ORDER is neither strict nor command");
  }
  const CMappedFile file(transcript_);
  if (file.Error() != 0) {
    return Refuse(kRecorderFailure, "cannot be read: Windows error " + std::to_string(file.Error()));
  }
  tagTranscript transcript;
  if (const auto error = ReadTranscript(file.Bytes(), transcript)) {
    return Refuse(FailureAt(error->line), "line " + std::to_string(error->line) + ": " + error->reason);
  }
  replay_.emplace(std::move(transcript),
                  order == L"command" ? ReplayOrder::kByCommand : ReplayOrder::kStrict);
}

void CPlayer::Refuse(std::int32_t code, const std::string& reason) {
  code_ = code;
  refusal_ = reason;
  Tell(reason);
  Report("failed: " + reason);
}

void CPlayer::TellFailure() {
  if (replay_ && !replay_->Failure().empty() && !std::exchange(was_told_, true)) {
    Tell(replay_->Failure());
    Report(replay_->Report());
  }
}

void CPlayer::Tell(const std::string& text) {
  const CKeptError kept;
  const std::string line = "Ferrolink replay: " + Utf8(transcript_.filename().wstring()) + ": " + text + "\n";
  OutputDebugStringA(line.c_str());
  if (const HANDLE stream = GetStdHandle(STD_ERROR_HANDLE);
      stream != nullptr && stream != INVALID_HANDLE_VALUE) {
    DWORD written = 0;
    WriteFile(stream, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
  }
}

void CPlayer::Report(const std::string& text) {
  const CKeptError kept;
  if (!report_.empty()) {
    std::ofstream(report_, std::ios::binary) << text << '\n';
  }
}

}  // namespace recorder
