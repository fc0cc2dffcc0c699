#include "emulator/network/port_record.h"

#include <algorithm>
#include <utility>

#include "emulator/port/exchange.h"

namespace lxemu {
namespace {

std::string Big32(std::uint32_t value) {
  return {static_cast<char>(value >> 24), static_cast<char>(value >> 16 & 255),
          static_cast<char>(value >> 8 & 255), static_cast<char>(value & 255)};
}

std::uint32_t FromBig32(std::string_view bytes) {
  std::uint32_t value = 0;
  for (const char byte : bytes.substr(0, 4)) {
    value = value << 8 | static_cast<std::uint8_t>(byte);
  }
  return value;
}

/// Text begins with the mark, or could still become it.
bool MayStartWith(std::string_view text, std::string_view mark) {
  const std::size_t size = std::min(text.size(), mark.size());
  return text.substr(0, size) == mark.substr(0, size);
}

}  // namespace

std::string RecordHeader(const tagRecordHeader& header) {
  return std::string(kRecordMark) + static_cast<char>(header.kind) + Big32(header.number) +
         Big32(header.length);
}

std::optional<tagRecordHeader> ParseRecordHeader(std::string_view bytes) {
  if (bytes.size() < kRecordHeaderSize || !bytes.starts_with(kRecordMark)) {
    return std::nullopt;
  }
  return tagRecordHeader{static_cast<RecordKind>(bytes[3]), FromBig32(bytes.substr(4)),
                         FromBig32(bytes.substr(8))};
}

void CRequestStream::Append(std::string_view bytes) {
  buffer_.erase(0, std::exchange(position_, 0));
  buffer_.append(bytes);
}

std::optional<tagRequest> CRequestStream::Next() {
  static const std::string record_start = std::string(kRecordMark) + static_cast<char>(RecordKind::kCommands);
  while (!is_broken_ && !IsEmpty()) {
    const bool is_record = MayStartWith(Rest(), record_start);
    if (is_record || MayStartWith(Rest(), kFrameStart)) {
      return is_record ? NextRecord() : NextFrame();
    }
    const char starts[] = {record_start.front(), kFrameStart.front()};
    Skip(std::min(Rest().find_first_of({starts, 2}, 1), Rest().size()));
  }
  return std::nullopt;
}

std::optional<tagRequest> CRequestStream::NextRecord() {
  const std::optional<tagRecordHeader> header = ParseRecordHeader(Rest());
  if (!header) {
    return std::nullopt;
  }
  if (header->length > kMaximumRecord) {
    is_broken_ = true;
    return std::nullopt;
  }
  if (Rest().size() < kRecordHeaderSize + header->length) {
    return std::nullopt;
  }
  const tagRequest request{Rest().substr(kRecordHeaderSize, header->length), header->number};
  position_ += kRecordHeaderSize + header->length;
  return request;
}

std::optional<tagRequest> CRequestStream::NextFrame() {
  const std::size_t end = Rest().find(kFrameEnd, std::max(searched_, kFrameStart.size()));
  if (end == std::string_view::npos) {
    // The end mark may have begun already.
    searched_ = Rest().size() < kFrameEnd.size() ? 0 : Rest().size() - kFrameEnd.size() + 1;
    is_broken_ = Rest().size() > kMaximumRecord;
    return std::nullopt;
  }
  searched_ = 0;
  const tagRequest request{Rest().substr(0, end + kFrameEnd.size()), std::nullopt};
  position_ += request.bytes.size();
  return request;
}

void CRequestStream::Skip(std::size_t count) {
  position_ += count;
  skipped_ += count;
}

std::size_t CRequestStream::TakeSkipped() {
  return std::exchange(skipped_, 0);
}

}  // namespace lxemu
