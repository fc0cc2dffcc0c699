#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "transcript/call.h"

namespace recorder {

/// What a call returns that the transcript does not foresee: this, less the number of the line that was
/// expected in its place (-2000017: line 17). This number itself: there is no such line, or no library.
inline constexpr std::int32_t kRecorderFailure = -2'000'000;

std::int32_t FailureAt(std::size_t line);

enum class ReplayOrder {
  kStrict,    ///< the calls of the transcript, one after the other, with the same bytes
  kByCommand  ///< every command that the transcript knows, in any order and as often as wished
};

/// Plays the part of the port library that a transcript tells of. The port description is not compared: the
/// port may have another name here. Not synchronised.
class CReplay {
 public:
  CReplay(tagTranscript transcript, ReplayOrder order);

  std::int32_t Initialize();
  std::int32_t Terminate();
  std::int32_t SendData(const std::uint8_t* bytes_or_null, std::uint32_t size);
  std::int32_t ReceiveData(std::uint8_t* buffer_or_null, std::uint32_t* count_or_null);
  /// ClearReceiveData and GetPortComIndex: nobody saw what they returned, so it is 0.
  std::int32_t CallUnseen(CallKind kind);

  ReplayOrder Order() const { return order_; }
  /// What went wrong first, with the line; empty while nothing did. In strict order nothing is played
  /// after it.
  const std::string& Failure() const { return failure_; }
  /// Whether all of it was played (strict order) without a failure.
  bool IsComplete() const;
  /// One line: complete, failed and where, or how far it got.
  std::string Report() const;

 private:
  std::int32_t Fail(std::size_t line, const std::string& reason);
  const tagCall* Peek() const;
  std::size_t ExpectedLine() const;
  void PassEmptyPolls();
  const tagCall* Expect(CallKind kind, std::int32_t& code);
  std::int32_t Poll(std::uint32_t& count);
  std::int32_t Read(std::uint8_t* buffer, std::uint32_t& count);
  std::int32_t SendByCommand(std::string_view bytes);
  std::int32_t ReceiveByCommand(std::uint8_t* buffer_or_null, std::uint32_t& count);

  tagTranscript transcript_;
  ReplayOrder order_;
  std::size_t position_ = 0;  // strict order: of the next call
  std::size_t played_ = 0;    // calls, or by command: commands
  bool is_waiting_ = false;   // strict order: the last call was told that nothing waits
  std::string failure_;
  std::int32_t failure_code_ = 0;

  // By command: what was played already, and what is left of the last command's answer.
  std::vector<bool> is_played_;
  std::string answer_;
  std::size_t answer_start_ = 0;
  std::int32_t poll_code_ = 0;
  std::int32_t read_code_ = 0;
};

}  // namespace recorder
