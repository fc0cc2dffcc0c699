#include "backup_file/stored_download.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "backup_file/backup_contents.h"
#include "backup_file/encoded_data.h"

namespace tvmgr {
namespace {

constexpr std::string_view kObjectHead = "~DY";
constexpr std::string_view kFormatHead = "^XA^DF";
constexpr std::string_view kNameEnd = "^FS";
constexpr std::string_view kFormatEnd = "^XZ";
constexpr std::string_view kAlternativeEnd =
    "\x1E"
    "XZ";
constexpr std::string_view kDevice = "E:";
constexpr std::string_view kPlainMarker = ":B64:";
constexpr std::string_view kCompressedMarker = ":Z64:";
constexpr std::size_t kLongestField = 32;

constexpr std::string_view kOtherName = "its data is the download of a file with another name";
constexpr std::string_view kNoDownload = "its data is no download command";

/** "E:NAME.EXT"; device and extension may be left out. */
bool IsName(std::string_view text, std::string_view name) {
  text.remove_prefix(text.starts_with(kDevice) ? kDevice.size() : 0);
  return text == name || text == name.substr(0, name.find('.'));
}

/** A number as it is printed: no sign, no zeros in front. */
std::optional<std::uint64_t> ReadNumber(std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool fits = error == std::errc() && end == text.data() + text.size();
  return fits && (text == "0" || !text.starts_with('0')) ? std::optional(number) : std::nullopt;
}

/** The head of an object's command and where its data begins. */
struct tagObjectHead {
  std::array<std::string_view, 5> fields; /**< name, form of the data, kind, bytes, bytes in a row */
  std::size_t data_begin = 0;
};

std::optional<tagObjectHead> ReadHead(std::string_view bytes) {
  tagObjectHead head{{}, kObjectHead.size()};
  for (std::string_view& field : head.fields) {
    const std::string_view rest = bytes.substr(head.data_begin, kLongestField);
    const std::size_t size = rest.find(',');
    if (size == std::string_view::npos) {
      return std::nullopt;
    }
    field = rest.substr(0, size);
    head.data_begin += size + 1;
  }
  return head;
}

/** True for a marker of encoded data with a damaged byte or two: no file begins in such a way. */
bool IsDamagedMarker(std::string_view data) {
  const auto damage = [&](std::string_view marker) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < marker.size(); ++i) {
      count += i >= data.size() || data[i] != marker[i] ? 1U : 0U;
    }
    return count;
  };
  return damage(kPlainMarker) <= 2 || damage(kCompressedMarker) <= 2;
}

tagStoredDownload ReadObject(std::string_view name, std::string_view bytes, std::string* stored) {
  const std::optional<tagObjectHead> head = ReadHead(bytes);
  const std::optional<std::uint64_t> total = head ? ReadNumber(head->fields[3]) : std::nullopt;
  if (!total) {
    return {std::nullopt, 0, kNoDownload};
  }
  const auto problem = [&](std::string_view text) { return tagStoredDownload{total, 0, text}; };
  if (!IsName(head->fields[0], name)) {
    return problem(kOtherName);
  }
  const tagKindOfFile kind = KindOfBackupFile(name);
  const std::optional<std::uint64_t> row = ReadNumber(head->fields[4]);
  // A graphic without a head of its own has whole rows; all other files have none.
  const bool fits = row && (*row == 0 || (kind.object_letter == 'G' && *total % *row == 0));
  if (head->fields[1] != "B" || head->fields[2] != std::string_view(&kind.object_letter, 1) || !fits) {
    return problem("the head of its download command does not fit the file");
  }
  const std::string_view data = bytes.substr(head->data_begin);
  if (data.starts_with(kPlainMarker) || data.starts_with(kCompressedMarker)) {
    const tagEncodedData encoded = ReadEncodedData(data.substr(kPlainMarker.size()),
                                                   data.starts_with(kCompressedMarker), *total, stored);
    return encoded.problem.empty()
               ? tagStoredDownload{total, head->data_begin + kPlainMarker.size() + encoded.size, {}}
               : problem(encoded.problem);
  }
  if (IsDamagedMarker(data)) {
    return problem("the marker in front of its data is damaged");
  }
  if (data.size() < *total) {
    return problem(kCutOff);
  }
  const auto size = static_cast<std::size_t>(*total);
  if (stored != nullptr) {
    *stored = data.substr(0, size);
  }
  return {total, head->data_begin + size, {}};
}

tagStoredDownload ReadFormat(std::string_view name, std::string_view bytes, std::string* stored) {
  const auto problem = [&](std::string_view text) { return tagStoredDownload{std::nullopt, 0, text}; };
  const std::size_t begin = kFormatHead.size();
  const std::size_t name_size = bytes.substr(begin, kLongestField).find(kNameEnd);
  if (name_size == std::string_view::npos) {
    return problem(kNoDownload);
  }
  if (!IsName(bytes.substr(begin, name_size), name)) {
    return problem(kOtherName);
  }
  const std::size_t body = begin + name_size + kNameEnd.size();
  // The printer takes the first one for the end of the file, and carries out what follows.
  const std::size_t end = bytes.find(kFormatEnd, body);
  if (end == std::string_view::npos) {
    return problem(kCutOff);
  }
  const std::string_view text = bytes.substr(body, end - body);
  if (text.find(kAlternativeEnd) != std::string_view::npos) {
    return problem("its data ends in its middle");
  }
  if (stored != nullptr) {
    *stored = text;
  }
  return {std::nullopt, end + kFormatEnd.size(), {}};
}

tagStoredDownload Read(std::string_view name, std::string_view bytes, std::string* stored) {
  const bool is_object = KindOfBackupFile(name).object_letter != 0;
  if (!bytes.starts_with(is_object ? kObjectHead : kFormatHead)) {
    return {std::nullopt, 0, kNoDownload};
  }
  return is_object ? ReadObject(name, bytes, stored) : ReadFormat(name, bytes, stored);
}

}  // namespace

tagStoredDownload ReadStoredDownload(std::string_view name, std::string_view bytes) {
  return Read(name, bytes, nullptr);
}

std::optional<std::string> BytesOfDownload(std::string_view name, std::string_view command) {
  std::string stored;
  const tagStoredDownload download = Read(name, command, &stored);
  return download.problem.empty() && download.size == command.size() ? std::optional(std::move(stored))
                                                                     : std::nullopt;
}

}  // namespace tvmgr
