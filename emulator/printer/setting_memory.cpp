#include "emulator/printer/setting_memory.h"

#include <charconv>
#include <optional>

namespace lxemu {
namespace {

bool IsPrefixKey(std::string_view key) {
  return key == kControlPrefixKey || key == kFormatPrefixKey || key == kDelimiterKey;
}

std::optional<char> ByteOfHex(std::string_view text) {
  unsigned value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (text.size() != 2 || error != std::errc{} || end != text.data() + text.size()) {
    return std::nullopt;
  }
  return static_cast<char>(static_cast<unsigned char>(value));
}

}  // namespace

std::string HexByte(char byte) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  return {kDigits[value >> 4], kDigits[value & 15]};
}

CSettingMemory::CSettingMemory() {
  for (std::size_t i = 0; i < kFactorySettings.size(); ++i) {
    factory_[i] = kFactorySettings[i].value;
  }
  saved_ = factory_;
  current_ = factory_;
}

std::string_view CSettingMemory::Current(std::string_view key) const {
  const std::size_t index = FindSetting(key);
  return index < current_.size() ? std::string_view(current_[index]) : std::string_view();
}

std::string_view CSettingMemory::Saved(std::string_view key) const {
  const std::size_t index = FindSetting(key);
  return index < saved_.size() ? std::string_view(saved_[index]) : std::string_view();
}

bool CSettingMemory::SetCurrent(std::string_view key, std::string_view value) {
  return Assign(current_, key, value);
}

bool CSettingMemory::SetSaved(std::string_view key, std::string_view value) {
  return Assign(saved_, key, value);
}

bool CSettingMemory::SetFactory(std::string_view key, std::string_view value) {
  return Assign(factory_, key, value);
}

void CSettingMemory::Save() {
  saved_ = current_;
}

void CSettingMemory::LoadSaved() {
  current_ = saved_;
}

void CSettingMemory::RestoreFactory() {
  current_ = factory_;
}

tagPrefixes CSettingMemory::Prefixes() const {
  // Assign keeps the three values well-formed.
  return {ByteOfHex(Current(kControlPrefixKey)).value_or(kDefaultPrefixes.control),
          ByteOfHex(Current(kFormatPrefixKey)).value_or(kDefaultPrefixes.format),
          ByteOfHex(Current(kDelimiterKey)).value_or(kDefaultPrefixes.delimiter)};
}

bool CSettingMemory::Assign(Values& values, std::string_view key, std::string_view value) {
  const std::size_t index = FindSetting(key);
  if (index == values.size()) {
    return false;
  }
  if (IsPrefixKey(key)) {
    const std::optional<char> byte = ByteOfHex(value);
    if (!byte) {
      return false;
    }
    values[index] = HexByte(*byte);
  } else {
    values[index] = value;
  }
  return true;
}

}  // namespace lxemu
