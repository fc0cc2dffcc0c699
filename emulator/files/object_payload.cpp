#include "emulator/files/object_payload.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <stdexcept>

#include <zlib.h>

#include "emulator/files/base64.h"

namespace lxemu {
namespace {

constexpr std::string_view kPlainMarker = ":B64:";
constexpr std::string_view kCompressedMarker = ":Z64:";
constexpr std::size_t kCrcDigits = 4;

Bytef* Bytes(std::string& text) {
  return reinterpret_cast<Bytef*>(text.data());
}

const Bytef* Bytes(std::string_view text) {
  return reinterpret_cast<const Bytef*>(text.data());
}

std::string Deflated(std::string_view bytes) {
  uLongf size = compressBound(static_cast<uLong>(bytes.size()));
  std::string packed(size, '\0');
  if (compress2(Bytes(packed), &size, Bytes(bytes), static_cast<uLong>(bytes.size()), Z_BEST_SPEED) != Z_OK) {
    throw std::runtime_error("a file could not be compressed");
  }
  packed.resize(size);
  return packed;
}

// A few bytes can inflate to a thousand times as many.
std::optional<std::string> Inflated(std::string_view packed, std::size_t limit) {
  z_stream stream{};
  if (inflateInit(&stream) != Z_OK) {
    return std::nullopt;
  }
  stream.next_in = const_cast<Bytef*>(Bytes(packed));
  stream.avail_in = static_cast<uInt>(packed.size());
  std::string bytes;
  int result = Z_OK;
  while (result == Z_OK && bytes.size() <= limit) {
    const std::size_t filled = bytes.size();
    bytes.resize(std::min(std::max(filled * 2, std::size_t{4096}), limit + 1));
    stream.next_out = Bytes(bytes) + filled;
    stream.avail_out = static_cast<uInt>(bytes.size() - filled);
    result = inflate(&stream, Z_NO_FLUSH);
    bytes.resize(bytes.size() - stream.avail_out);
  }
  inflateEnd(&stream);
  if (result != Z_STREAM_END || bytes.size() > limit) {
    return std::nullopt;
  }
  return bytes;
}

bool IsHexDigit(char byte) {
  return std::isxdigit(static_cast<unsigned char>(byte)) != 0;
}

/// The run of bytes of one kind that the text begins with.
template <typename Predicate>
std::string_view LeadingRun(std::string_view text, Predicate belongs) {
  const auto end = std::find_if_not(text.begin(), text.end(), belongs);
  return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

tagPayload ReadEncoded(std::string_view text, bool is_compressed, std::size_t limit) {
  const std::string_view encoded = LeadingRun(text.substr(kPlainMarker.size()), IsBase64Byte);
  tagPayload payload{kPlainMarker.size() + encoded.size(), std::nullopt};
  if (text.substr(payload.length).starts_with(':')) {
    ++payload.length;
    const std::string_view checksum = LeadingRun(text.substr(payload.length, kCrcDigits), IsHexDigit);
    payload.length += checksum.size();
    unsigned expected = 0;
    std::from_chars(checksum.data(), checksum.data() + checksum.size(), expected, 16);
    if (!checksum.empty() && (checksum.size() != kCrcDigits || expected != Crc16(encoded))) {
      return payload;
    }
  }
  payload.bytes = DecodeBase64(encoded);
  if (payload.bytes && is_compressed) {
    payload.bytes = Inflated(*payload.bytes, limit);
  }
  return payload;
}

}  // namespace

tagPayload ReadPayload(std::string_view text, std::size_t total, std::size_t limit) {
  if (text.starts_with(kPlainMarker) || text.starts_with(kCompressedMarker)) {
    return ReadEncoded(text, text.starts_with(kCompressedMarker), limit);
  }
  if (total > text.size()) {
    return {text.size(), std::nullopt};
  }
  return {total, std::string(text.substr(0, total))};
}

void AppendPayload(std::string& answer, std::string_view bytes, bool is_compressed) {
  answer += is_compressed ? kCompressedMarker : kPlainMarker;
  const std::size_t begin = answer.size();
  if (is_compressed) {
    AppendBase64(answer, Deflated(bytes));
  } else {
    AppendBase64(answer, bytes);
  }
  const unsigned crc = Crc16(std::string_view(answer).substr(begin));
  answer += ':';
  for (int shift = 12; shift >= 0; shift -= 4) {
    answer += "0123456789ABCDEF"[crc >> shift & 15];
  }
}

}  // namespace lxemu
