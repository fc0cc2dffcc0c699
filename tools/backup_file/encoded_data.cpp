#include "backup_file/encoded_data.h"

#include <zlib.h>

#include <algorithm>
#include <array>

namespace tvmgr {
namespace {

constexpr std::size_t kChecksumDigits = 4;
constexpr std::string_view kOtherSize = "its data is not as long as its download command says";

/** The value of a base64 character; 64 for every other byte. */
constexpr std::array<std::uint8_t, 256> kValues = [] {
  constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::array<std::uint8_t, 256> values{};
  values.fill(64);
  for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
    values[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}();

std::uint32_t ValueOf(char c) {
  return kValues[static_cast<unsigned char>(c)];
}

std::string DecodeBase64(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t i = 0; i < text.size(); i += 4) {
    const std::size_t count = std::min<std::size_t>(4, text.size() - i);
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 4; ++k) {
      group = group << 6 | (k < count ? ValueOf(text[i + k]) : 0U);
    }
    for (std::size_t k = 0; k + 1 < count; ++k) {
      bytes += static_cast<char>(group >> (16 - 8 * k) & 0xFF);
    }
  }
  return bytes;
}

// Gives the size; none when the stream is damaged, is followed by something or comes to more than `largest`.
std::optional<std::uint64_t> InflateTo(std::string_view packed, std::uint64_t largest, std::string* bytes) {
  z_stream stream{};
  if (packed.size() > UINT32_MAX || inflateInit(&stream) != Z_OK) {
    return std::nullopt;
  }
  stream.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(packed.data()));
  stream.avail_in = static_cast<uInt>(packed.size());
  std::array<char, 1 << 16> block;
  std::uint64_t size = 0;
  int result = Z_OK;
  while (result == Z_OK && size <= largest) {
    stream.next_out = reinterpret_cast<Bytef*>(block.data());
    stream.avail_out = static_cast<uInt>(block.size());
    result = inflate(&stream, Z_NO_FLUSH);
    const std::size_t count = block.size() - stream.avail_out;
    size += count;
    if (bytes != nullptr) {
      bytes->append(block.data(), count);
    }
  }
  const bool is_whole = result == Z_STREAM_END && stream.avail_in == 0 && size <= largest;
  inflateEnd(&stream);
  return is_whole ? std::optional(size) : std::nullopt;
}

std::string ChecksumDigits(std::string_view base64) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const std::uint16_t checksum = DownloadChecksum(base64);
  std::string digits;
  for (int shift = 12; shift >= 0; shift -= 4) {
    digits += kDigits[checksum >> shift & 15];
  }
  return digits;
}

}  // namespace

tagEncodedData ReadEncodedData(std::string_view text, bool compressed, std::uint64_t stored_bytes,
                               std::string* stored) {
  const auto* const plain_end =
      std::find_if(text.data(), text.data() + text.size(), [](char c) { return ValueOf(c) == 64; });
  const std::string_view plain = text.substr(0, static_cast<std::size_t>(plain_end - text.data()));
  const std::size_t filler = std::min<std::size_t>((4 - plain.size() % 4) % 4, 3);
  const std::string_view base64 = text.substr(0, plain.size() + filler);
  const std::string_view behind = text.substr(base64.size());
  if (filler == 3 || base64.substr(plain.size()) != std::string_view("==").substr(0, filler) ||
      !behind.starts_with(':') || behind.size() <= kChecksumDigits) {
    return {0, kCutOff};
  }
  if (behind.substr(1, kChecksumDigits) != ChecksumDigits(base64)) {
    return {0, "its data does not match its checksum"};
  }
  const std::size_t size = base64.size() + 1 + kChecksumDigits;
  if (!compressed && stored == nullptr) {
    return plain.size() * 3 / 4 == stored_bytes ? tagEncodedData{size, {}} : tagEncodedData{0, kOtherSize};
  }
  std::string bytes = DecodeBase64(plain);
  if (!compressed) {
    *stored = std::move(bytes);
    return stored->size() == stored_bytes ? tagEncodedData{size, {}} : tagEncodedData{0, kOtherSize};
  }
  const std::optional<std::uint64_t> inflated = InflateTo(bytes, stored_bytes, stored);
  return inflated == stored_bytes ? tagEncodedData{size, {}} : tagEncodedData{0, kOtherSize};
}

std::optional<std::string> Inflate(std::string_view packed, std::uint64_t largest) {
  std::string bytes;
  return InflateTo(packed, largest, &bytes) ? std::optional(std::move(bytes)) : std::nullopt;
}

std::uint16_t DownloadChecksum(std::string_view text) {
  static constexpr auto kTable = [] {
    std::array<std::uint16_t, 256> table{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
      std::uint32_t value = byte << 8;
      for (int bit = 0; bit < 8; ++bit) {
        value = (value & 0x8000U) != 0 ? value << 1 ^ 0x1021U : value << 1;
      }
      table[byte] = static_cast<std::uint16_t>(value);
    }
    return table;
  }();
  std::uint16_t crc = 0;
  for (const char c : text) {
    const auto index = static_cast<std::uint8_t>(crc >> 8 ^ static_cast<unsigned char>(c));
    crc = static_cast<std::uint16_t>(crc << 8 ^ kTable[index]);
  }
  return crc;
}

}  // namespace tvmgr
