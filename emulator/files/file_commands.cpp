// The commands of CCommandInterpreter that concern files in printer memory.
#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include "emulator/files/directory_listing.h"
#include "emulator/files/object_payload.h"
#include "emulator/printer/command_interpreter.h"

namespace lxemu {
namespace {

// The five fields in front of an object's data are short; what is longer is no upload.
constexpr std::size_t kMaximumObjectHeader = 256;
constexpr std::size_t kObjectFields = 5;
constexpr std::size_t kMaximumPattern = 64;
constexpr std::uint64_t kMaximumInflated = std::uint64_t{256} << 20;

struct tagObjectKind {
  char letter;
  std::string_view extension;
};
constexpr std::array kObjectKinds =
    std::to_array<tagObjectKind>({{'P', ".PNG"}, {'G', ".GRF"}, {'T', ".TTF"}, {'E', ".TTE"}});

std::string_view ExtensionOfKind(std::string_view letter) {
  const auto found = std::find_if(kObjectKinds.begin(), kObjectKinds.end(), [&](const tagObjectKind& kind) {
    return letter == std::string_view(&kind.letter, 1);
  });
  return found == kObjectKinds.end() ? std::string_view() : found->extension;
}

/// The letter of a name's kind; B for the others, whose names carry their extension.
char KindOfName(std::string_view name) {
  const std::string folded = FoldCase(name);
  const auto found = std::find_if(kObjectKinds.begin(), kObjectKinds.end(), [&](const tagObjectKind& kind) {
    return folded.ends_with(kind.extension);
  });
  return found == kObjectKinds.end() ? 'B' : found->letter;
}

std::string Qualified(const tagFileName& name) {
  return std::string{name.device, ':'} + name.name;
}

}  // namespace

std::string_view CCommandInterpreter::SplitField(std::string_view& text) const {
  const auto end = std::find_if(text.begin(), text.end(),
                                [&](char byte) { return dialects_.IsDelimiter(byte, dialect_); });
  const std::string_view field = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(std::min(field.size() + 1, text.size()));
  return field;
}

void CCommandInterpreter::ListDirectory() {
  std::string_view parameters = TakeParameters();
  const std::optional<tagDeviceText> place = SplitDevice(SplitField(parameters));
  if (!place || place->rest.size() > kMaximumPattern) {
    ++state_.counts.malformed;
    return;
  }
  const std::string_view pattern = place->rest.empty() ? "*" : place->rest;
  AppendFrame(DirectoryListing(state_.files, place->device, pattern, state_.quirks.device_capacity));
}

void CCommandInterpreter::StoreFormat() {
  const std::optional<tagFileName> name = ParseFileName(TakeParameters(), ".ZPL");
  if (Rest().size() >= 3 && Rest().substr(1, 2) == "FS" && dialects_.IsFormatPrefix(Rest().front())) {
    position_ += 3;
  }
  const std::size_t begin = position_;
  while (position_ < stream_.size()) {
    const char byte = stream_[position_];
    if (dialects_.EndsParameters(byte, dialect_) && dialects_.IsFormatPrefix(byte) &&
        Rest().substr(1).starts_with("XZ")) {
      break;
    }
    ++position_;
  }
  if (!name || position_ == stream_.size()) {
    ++state_.counts.malformed;
    return;
  }
  PutFile(*name, std::string(stream_.substr(begin, position_ - begin)));
}

void CCommandInterpreter::StoreObject() {
  std::array<std::string_view, kObjectFields> fields;
  std::size_t field = 0;
  std::size_t begin = position_;
  const std::size_t header_end = std::min(stream_.size(), position_ + kMaximumObjectHeader);
  for (; field < kObjectFields && position_ < header_end; ++position_) {
    const char byte = stream_[position_];
    if (dialects_.IsDelimiter(byte, dialect_)) {
      fields[field++] = Trim(stream_.substr(begin, position_ - begin));
      begin = position_ + 1;
    } else if (dialects_.EndsParameters(byte, dialect_)) {
      break;
    }
  }
  std::size_t total = 0;
  const std::string_view digits = fields[3];
  std::from_chars(digits.data(), digits.data() + digits.size(), total);
  if (field < kObjectFields) {
    ++state_.counts.malformed;
    return;
  }
  const std::uint64_t largest = std::min(kMaximumInflated, state_.quirks.device_capacity);
  tagPayload payload = ReadPayload(Rest(), total, static_cast<std::size_t>(largest));
  position_ += payload.length;
  const std::optional<tagFileName> name = ParseFileName(fields[0], ExtensionOfKind(fields[2]));
  if (!name) {
    ++state_.counts.malformed;
  } else if (!payload.bytes) {
    ++state_.counts.refused;
  } else {
    PutFile(*name, std::move(*payload.bytes));
  }
}

void CCommandInterpreter::SendFormat() {
  const std::string_view text = TakeParameters();
  const tagStoredFile* file = nullptr;
  for (const std::string_view extension : {".ZPL", ".FMT"}) {
    const std::optional<tagFileName> name = ParseFileName(text, extension);
    file = name && file == nullptr ? state_.files.Find(*name) : file;
  }
  if (file == nullptr || !HasRoomFor(file->bytes.size() + kMaximumObjectHeader)) {
    return;
  }
  const char prefix = dialects_.AnswerPrefixes(dialect_).format;
  std::string name = Qualified(file->name);
  if (state_.quirks.short_format_names) {
    name = file->name.name.substr(0, file->name.name.find('.'));
  }
  answer_.reserve(answer_.size() + file->bytes.size() + kMaximumObjectHeader);
  ((answer_ += prefix) += "XA") += prefix;
  ((answer_ += "DF") += name) += prefix;
  ((answer_ += "FS") += file->bytes) += prefix;
  answer_ += "XZ";
}

void CCommandInterpreter::SendObject() {
  const std::optional<tagFileName> name = ParseFileName(TakeParameters());
  const tagStoredFile* file = name ? state_.files.Find(*name) : nullptr;
  const std::size_t encoded_size = file == nullptr ? 0 : file->bytes.size() / 3 * 4 + kMaximumObjectHeader;
  if (file == nullptr || !HasRoomFor(encoded_size)) {
    return;
  }
  const tagPrefixes& prefixes = dialects_.AnswerPrefixes(dialect_);
  const char delimiter = prefixes.delimiter;
  answer_.reserve(answer_.size() + encoded_size);
  ((answer_ += prefixes.control) += "DY") += Qualified(file->name);
  ((answer_ += delimiter) += 'B') += delimiter;
  ((answer_ += KindOfName(file->name.name)) += delimiter) += std::to_string(file->bytes.size());
  ((answer_ += delimiter) += '0') += delimiter;
  AppendPayload(answer_, file->bytes, state_.quirks.compressed_downloads);
}

void CCommandInterpreter::RemoveFiles() {
  const std::optional<tagDeviceText> place = SplitDevice(TakeParameters());
  if (!place || place->rest.empty() || place->rest.size() > kMaximumPattern) {
    ++state_.counts.malformed;
    return;
  }
  state_.counts.refused += state_.files.Remove(place->device, place->rest);
}

void CCommandInterpreter::SetAttribute() {
  std::string_view parameters = TakeParameters();
  const std::optional<tagFileName> name = ParseFileName(SplitField(parameters));
  const std::string_view value = Trim(parameters);
  if (!name || (value != "Y" && value != "N")) {
    ++state_.counts.malformed;
    return;
  }
  state_.files.SetProtected(*name, value == "Y");
}

void CCommandInterpreter::InitializeDevice() {
  const std::string_view letter = Trim(TakeParameters());
  if (letter.size() != 1 || !IsDevice(letter.front())) {
    ++state_.counts.malformed;
    return;
  }
  state_.files.EraseDevice(letter.front());
}

void CCommandInterpreter::PutFile(const tagFileName& name, std::string bytes) {
  const tagStoredFile* old = state_.files.Find(name);
  const std::uint64_t others = state_.files.BytesOn(name.device) - (old == nullptr ? 0 : old->bytes.size());
  if ((old != nullptr && old->is_protected) || others + bytes.size() > state_.quirks.device_capacity) {
    ++state_.counts.refused;
    return;
  }
  state_.files.Put(name, std::move(bytes));
}

}  // namespace lxemu
