#include "emulator/files/base64.h"

#include <array>
#include <cstdint>

namespace lxemu {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kBlank = 64;
constexpr std::uint8_t kFiller = 65;
constexpr std::uint8_t kForeign = 66;

constexpr std::array<std::uint8_t, 256> MakeClasses() {
  std::array<std::uint8_t, 256> classes{};
  classes.fill(kForeign);
  for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
    classes[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
  }
  classes['='] = kFiller;
  classes['\r'] = classes['\n'] = classes['\t'] = classes[' '] = kBlank;
  return classes;
}

constexpr std::array<std::uint16_t, 256> MakeCrcTable() {
  std::array<std::uint16_t, 256> table{};
  for (unsigned byte = 0; byte < 256; ++byte) {
    unsigned crc = byte << 8;
    for (int bit = 0; bit < 8; ++bit) {
      crc = (crc & 0x8000u) != 0 ? (crc << 1) ^ 0x1021u : crc << 1;
    }
    table[byte] = static_cast<std::uint16_t>(crc);
  }
  return table;
}

constexpr std::array<std::uint8_t, 256> kClasses = MakeClasses();
constexpr std::array<std::uint16_t, 256> kCrcTable = MakeCrcTable();

std::uint8_t ClassOf(char byte) {
  return kClasses[static_cast<unsigned char>(byte)];
}

}  // namespace

bool IsBase64Byte(char byte) {
  return ClassOf(byte) != kForeign;
}

void AppendBase64(std::string& text, std::string_view bytes) {
  const auto byte_at = [&](std::size_t at) {
    return at < bytes.size() ? unsigned{static_cast<unsigned char>(bytes[at])} : 0u;
  };
  const std::size_t begin = text.size();
  text.resize(begin + (bytes.size() + 2) / 3 * 4);
  char* out = text.data() + begin;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const unsigned group = byte_at(i) << 16 | byte_at(i + 1) << 8 | byte_at(i + 2);
    *out++ = kAlphabet[group >> 18];
    *out++ = kAlphabet[(group >> 12) & 63];
    *out++ = i + 1 < bytes.size() ? kAlphabet[(group >> 6) & 63] : '=';
    *out++ = i + 2 < bytes.size() ? kAlphabet[group & 63] : '=';
  }
}

std::optional<std::string> DecodeBase64(std::string_view text) {
  std::string bytes(text.size() / 4 * 3 + 3, '\0');
  char* out = bytes.data();
  std::uint32_t group = 0;
  unsigned digits = 0;
  unsigned fillers = 0;
  for (const char byte : text) {
    const std::uint8_t value = ClassOf(byte);
    if (value == kBlank) {
      continue;
    }
    if (value == kFiller) {
      ++fillers;
      continue;
    }
    if (value == kForeign || fillers > 0) {
      return std::nullopt;
    }
    group = group << 6 | value;
    if (++digits == 4) {
      *out++ = static_cast<char>(group >> 16 & 255);
      *out++ = static_cast<char>(group >> 8 & 255);
      *out++ = static_cast<char>(group & 255);
      digits = 0;
    }
  }
  if (fillers > 2 || digits == 1 || (fillers > 0 && digits + fillers != 4)) {
    return std::nullopt;
  }
  if (digits >= 2) {
    group <<= 6 * (4 - digits);
    *out++ = static_cast<char>(group >> 16 & 255);
  }
  if (digits == 3) {
    *out++ = static_cast<char>(group >> 8 & 255);
  }
  bytes.resize(static_cast<std::size_t>(out - bytes.data()));
  return bytes;
}

unsigned Crc16(std::string_view bytes) {
  unsigned crc = 0;
  for (const char byte : bytes) {
    crc = ((crc << 8) ^ kCrcTable[(crc >> 8) ^ static_cast<unsigned char>(byte)]) & 0xFFFFu;
  }
  return crc;
}

}  // namespace lxemu
