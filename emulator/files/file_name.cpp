#include "emulator/files/file_name.h"

#include <algorithm>

namespace lxemu {
namespace {

constexpr std::size_t kMaximumBase = 8;
constexpr std::size_t kMaximumExtension = 3;

bool IsNameByte(char byte) {
  constexpr std::string_view kForbidden = ":*?,";
  return static_cast<unsigned char>(byte) > ' ' && byte != '\x7F' && kForbidden.find(byte) == kForbidden.npos;
}

bool IsEightDotThree(std::string_view name) {
  const std::size_t dot = name.find('.');
  if (dot == name.npos || dot == 0 || dot > kMaximumBase) {
    return false;
  }
  const std::string_view extension = name.substr(dot + 1);
  return !extension.empty() && extension.size() <= kMaximumExtension &&
         extension.find('.') == extension.npos && std::all_of(name.begin(), name.end(), IsNameByte);
}

}  // namespace

std::string_view Trim(std::string_view text) {
  const auto is_blank = [](char byte) { return static_cast<unsigned char>(byte) <= ' '; };
  while (!text.empty() && is_blank(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && is_blank(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

std::optional<tagDeviceText> SplitDevice(std::string_view text) {
  text = Trim(text);
  if (text.size() < 2 || text[1] != ':') {
    return tagDeviceText{kFlashDevice, text};
  }
  if (!IsDevice(text[0])) {
    return std::nullopt;
  }
  return tagDeviceText{text[0], text.substr(2)};
}

std::optional<tagFileName> ParseFileName(std::string_view text, std::string_view default_extension) {
  const std::optional<tagDeviceText> parts = SplitDevice(text);
  // The length test keeps a megabyte of garbage from being copied before it is refused.
  if (!parts || parts->rest.size() > kMaximumBase + 1 + kMaximumExtension) {
    return std::nullopt;
  }
  std::string name(parts->rest);
  if (name.find('.') == name.npos) {
    name += default_extension;
  }
  if (!IsEightDotThree(name)) {
    return std::nullopt;
  }
  return tagFileName{parts->device, std::move(name)};
}

std::string FoldCase(std::string_view text) {
  std::string folded(text);
  for (char& byte : folded) {
    if (byte >= 'a' && byte <= 'z') {
      byte = static_cast<char>(byte - 'a' + 'A');
    }
  }
  return folded;
}

bool MatchesPattern(std::string_view name, std::string_view pattern) {
  std::size_t n = 0;
  std::size_t p = 0;
  std::size_t star = pattern.npos;
  std::size_t retry = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      retry = n;
    } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
      ++p;
      ++n;
    } else if (star != pattern.npos) {
      p = star + 1;
      n = ++retry;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == pattern.npos;
}

}  // namespace lxemu
