#pragma once

#include <windows.h>

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include "transcript/replay.h"

namespace recorder {

/// Plays a transcript in place of a library, in the order TAVIRA_REPLAY_ORDER (strict, command). What does not
/// fit goes to the host's error stream and to a debugger; the last word goes to the report as well.
class CPlayer {
 public:
  CPlayer(std::filesystem::path transcript, std::filesystem::path report);

  /// Runs the work on the replay, one thread at a time; kRecorderFailure and a line when there is none.
  template <typename Work>
  std::int32_t Play(Work work) {
    const std::lock_guard lock(mutex_);
    try {
      Read();
      const std::int32_t result = replay_ ? work(*replay_) : code_;
      TellFailure();
      return result;
    } catch (...) {
      return kRecorderFailure;
    }
  }

  /// The end of the host, or of its use of the library.
  void Finish() noexcept;

 private:
  void Read();
  void Refuse(std::int32_t code, const std::string& reason);
  void TellFailure();
  void Tell(const std::string& text);
  void Report(const std::string& text);

  std::mutex mutex_;
  std::filesystem::path transcript_;
  std::filesystem::path report_;  // empty: none
  std::optional<CReplay> replay_;
  bool was_read_ = false;
  bool was_told_ = false;
  std::int32_t code_ = kRecorderFailure;
  std::string refusal_;  // why there is nothing to play
};

}  // namespace recorder
