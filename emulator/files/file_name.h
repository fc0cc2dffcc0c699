#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lxemu {

inline constexpr char kVolatileDevice = 'R';
inline constexpr char kFlashDevice = 'E';
inline constexpr char kSystemDevice = 'Z';

/// A place in printer memory: the device letter and a name of at most 8 characters, a dot and at most 3.
struct tagFileName {
  char device = kFlashDevice;
  std::string name;
};

constexpr bool IsDevice(char letter) {
  return letter == kVolatileDevice || letter == kFlashDevice || letter == kSystemDevice;
}

/// The text without blanks, line ends and other control bytes at either end.
std::string_view Trim(std::string_view text);

/// Splits "E:REST" (the device defaults to E:); none when the letter names no device.
struct tagDeviceText {
  char device = kFlashDevice;
  std::string_view rest;
};
std::optional<tagDeviceText> SplitDevice(std::string_view text);

/// Reads "E:LOGO.PNG"; a name without an extension gets the given one (".ZPL"), none when that is empty.
std::optional<tagFileName> ParseFileName(std::string_view text, std::string_view default_extension = {});

/// The name folded to upper case (ASCII letters): names that differ in case only are one file.
std::string FoldCase(std::string_view text);

/// Whether the name (already folded) fits the pattern (already folded): * any run, ? any one character.
bool MatchesPattern(std::string_view folded_name, std::string_view folded_pattern);

}  // namespace lxemu
