#include "trace/trace_text.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "trace/sha256.h"

namespace tvmgr {
namespace {

constexpr std::string_view kFrameStart = "\x10\x1B\x1D\x1B\x1B";
constexpr std::string_view kFrameEnd = "\x10\x1B\x1D\x1B\x1C";

/** Commands without a parameter of the user's, and heads after which one follows up to the next command. */
constexpr std::array<std::string_view, 8> kWhole{"^XA",  "^XZ",    "^JUS",   "^JUF",
                                                 "^H(E", "\x1EXA", "\x1EXZ", "\x1EJUS"};
constexpr std::array<std::string_view, 6> kHeads{"~H(", "^S(", "^HW", "\x10H(", "\x1EH(E", "\x1E\x43"};

constexpr std::string_view kSet = "^S(";
constexpr char kFieldEnd = '\x1F';  // stands for "," where prefix characters may be changed

bool IsOneLine(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) >= 0x20 || c == kFieldEnd; });
}

/** "CLR,Z", "E:*.PNG,c": behind a head not any text will do, as it may be a label's. */
bool IsNameOrKey(std::string_view text) {
  constexpr std::size_t kLongest = 24;
  return text.size() <= kLongest && IsOneLine(text) && text.find(' ') == std::string_view::npos;
}

bool TakeCommand(std::string_view& bytes) {
  for (const std::string_view whole : kWhole) {
    if (bytes.starts_with(whole)) {
      bytes.remove_prefix(whole.size());
      return true;
    }
  }
  for (const std::string_view head : kHeads) {
    if (bytes.starts_with(head)) {
      bytes.remove_prefix(head.size());
      const std::size_t size = std::min(bytes.find_first_of("^~\x10\x1E"), bytes.size());
      const std::string_view parameter = bytes.substr(0, size);
      bytes.remove_prefix(size);
      return head == kSet ? !parameter.empty() && IsOneLine(parameter) : IsNameOrKey(parameter);
    }
  }
  return false;
}

}  // namespace

std::string QuotedBytes(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string quoted = "\"";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      quoted += {'\\', c};
    } else if (c == '\r' || c == '\n') {
      quoted += c == '\r' ? "\\r" : "\\n";
    } else if (byte >= 0x20 && byte < 0x7F) {
      quoted += c;
    } else {
      quoted += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
    }
  }
  return quoted + "\"";
}

std::optional<std::string> BytesOfQuoted(std::string_view quoted) {
  if (quoted.size() < 2 || quoted.front() != '"' || quoted.back() != '"') {
    return std::nullopt;
  }
  quoted = quoted.substr(1, quoted.size() - 2);
  std::string bytes;
  while (!quoted.empty()) {
    if (quoted.front() == '"') {
      return std::nullopt;
    }
    if (quoted.front() != '\\') {
      bytes += quoted.front();
      quoted.remove_prefix(1);
      continue;
    }
    unsigned byte = 0;
    if (quoted.size() >= 4 && quoted[1] == 'x' &&
        std::from_chars(quoted.data() + 2, quoted.data() + 4, byte, 16).ptr == quoted.data() + 4) {
      bytes += static_cast<char>(byte);
      quoted.remove_prefix(4);
    } else if (quoted.size() >= 2 && std::string_view("\"\\rn").find(quoted[1]) != std::string_view::npos) {
      bytes += quoted[1] == 'r' ? '\r' : quoted[1] == 'n' ? '\n' : quoted[1];
      quoted.remove_prefix(2);
    } else {
      return std::nullopt;
    }
  }
  return bytes;
}

std::string DescribeBytes(std::string_view bytes, bool in_full) {
  return in_full || bytes.empty() ? QuotedBytes(bytes)
                                  : std::to_string(bytes.size()) + " bytes, SHA-256 " + Sha256(bytes);
}

bool IsSettingsTalk(std::string_view bytes) {
  if (bytes.starts_with(kFrameStart)) {
    bytes.remove_prefix(kFrameStart.size());
  }
  if (bytes.ends_with(kFrameEnd)) {
    bytes.remove_suffix(kFrameEnd.size());
  }
  while (!bytes.empty()) {
    if (!TakeCommand(bytes)) {
      return false;
    }
  }
  return true;
}

bool CTranscriptFilter::TakeAnswer(std::string_view bytes) {
  constexpr std::string_view kListing = "- DIR ";
  constexpr std::string_view kModel = "LX-";
  while (!bytes.empty()) {
    if (is_within_frame_) {
      const std::size_t end = bytes.find('\x03');
      is_within_frame_ = end == std::string_view::npos;
      bytes.remove_prefix(is_within_frame_ ? bytes.size() : end + 1);
    } else if (bytes.front() == '\r' || bytes.front() == '\n') {
      bytes.remove_prefix(1);
    } else {
      // The first character of a setting's answer may be another one.
      const std::string_view body = bytes.substr(1);
      if (bytes.front() != '\x02' || (!body.starts_with(kListing) && !body.starts_with(kModel) &&
                                      (body.size() < 3 || body.substr(1, 2) != "S("))) {
        return false;
      }
      is_within_frame_ = true;
      bytes.remove_prefix(1);
    }
  }
  return true;
}

bool CTranscriptFilter::IsLeftOut(std::string_view bytes) const {
  return std::any_of(left_out_.begin(), left_out_.end(), [&](const std::string& text) {
    return !text.empty() && bytes.find(text) != std::string_view::npos;
  });
}

std::string CTranscriptFilter::Filter(std::string_view line) {
  const std::size_t first = line.find('"');
  const std::string_view call = line.substr(0, first);
  const bool is_sent = call.find(" SendData ") != std::string_view::npos;
  const bool is_received = call.find(" ReceiveData ") != std::string_view::npos;
  const std::size_t last = line.rfind('"');
  if (with_contents_ || (!is_sent && !is_received) || first == std::string_view::npos) {
    return std::string(line);
  }
  const std::optional<std::string> bytes = BytesOfQuoted(line.substr(first, last - first + 1));
  if (is_sent) {
    is_settings_talk_ = bytes && IsSettingsTalk(*bytes) && !IsLeftOut(*bytes);
    is_within_frame_ = false;
  } else {
    // A file that was asked for before may come late: until the next question nothing is shown then.
    is_settings_talk_ = is_settings_talk_ && bytes && TakeAnswer(*bytes);
  }
  if (is_settings_talk_) {
    return std::string(line);
  }
  // Of a line that was cut off nothing is shown, either.
  return std::string(line.substr(0, first)) + "(" + (bytes ? DescribeBytes(*bytes, false) : "cut off") + ")" +
         std::string(bytes ? line.substr(last + 1) : "");
}

}  // namespace tvmgr
