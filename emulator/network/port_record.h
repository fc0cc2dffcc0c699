#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lxemu {

/// What goes over a connection between the stand-in port library and a network printer: a header of 12 bytes
/// ("LXE", a letter for the kind, number and length as 32 bits big-endian), then so many bytes.
enum class RecordKind : char {
  kCommands = 'C',  ///< host to printer: the bytes of one SendData
  kTaken = 'T',     ///< printer to host: the commands of this number were carried out; no bytes
  kAnswer = 'A',    ///< printer to host: the whole answer to the commands of this number; none when empty
};

inline constexpr std::size_t kRecordHeaderSize = 12;
inline constexpr std::string_view kRecordMark = "LXE";
/// The longest record, and the longest frame without one, that either side takes.
inline constexpr std::size_t kMaximumRecord = std::size_t{1} << 30;

struct tagRecordHeader {
  RecordKind kind = RecordKind::kCommands;
  std::uint32_t number = 0;
  std::uint32_t length = 0;  ///< bytes behind the header
};

std::string RecordHeader(const tagRecordHeader& header);
/// None when these are not 12 bytes of a header.
std::optional<tagRecordHeader> ParseRecordHeader(std::string_view bytes);

/// One thing that a printer was told to do.
struct tagRequest {
  std::string_view bytes;               ///< command bytes with their frame marks
  std::optional<std::uint32_t> number;  ///< of the record that brought them; none: a frame as it stands
};

/// Takes the bytes of one connection apart into requests: records, and transmission frames as they stand
/// (from their start mark to the next end mark). What is neither is skipped.
class CRequestStream {
 public:
  void Append(std::string_view bytes);
  /// The next whole request; it stays valid until the next Append. None: more bytes are needed.
  std::optional<tagRequest> Next();
  /// Nothing more can be read: a record or frame beyond all measure.
  bool IsBroken() const { return is_broken_; }
  /// True when nothing waits but what was skipped.
  bool IsEmpty() const { return position_ == buffer_.size(); }
  /// Bytes skipped since the last call.
  std::size_t TakeSkipped();

 private:
  std::optional<tagRequest> NextRecord();
  std::optional<tagRequest> NextFrame();
  std::string_view Rest() const { return std::string_view(buffer_).substr(position_); }
  void Skip(std::size_t count);

  std::string buffer_;
  std::size_t position_ = 0;
  std::size_t searched_ = 0;  // of the frame at position_, bytes in which no end mark begins
  std::size_t skipped_ = 0;
  bool is_broken_ = false;
};

}  // namespace lxemu
