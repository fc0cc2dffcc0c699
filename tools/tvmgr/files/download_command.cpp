#include "files/download_command.h"

#include <algorithm>

#include "backup_file/encoded_data.h"
#include "output/command_error.h"
#include "output/text_encoding.h"

namespace tvmgr {
namespace {

constexpr std::string_view kObjectHead = "~DY";
constexpr std::string_view kFormatOpener = "^XA";
constexpr std::string_view kFormatHead = "^DF";
constexpr std::string_view kFieldEnd = "^FS";
constexpr std::string_view kFormatCloser = "^XZ";

std::string_view SkipBlanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  return text;
}

std::string_view TrimBlanks(std::string_view text) {
  text = SkipBlanks(text);
  return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
}

// Commands are written in either case.
bool StartsWith(std::string_view text, std::string_view command) {
  return EqualsIgnoreCase(text.substr(0, command.size()), command);
}

// What follows "^DF"; empty when the text does not begin with a format download.
std::string_view AfterFormatHead(std::string_view text) {
  text = SkipBlanks(text);
  if (!StartsWith(text, kFormatOpener)) {
    return {};
  }
  text = SkipBlanks(text.substr(kFormatOpener.size()));
  return StartsWith(text, kFormatHead) ? text.substr(kFormatHead.size()) : std::string_view();
}

std::string EncodeBase64(std::string_view bytes) {
  constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      group = group << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += k <= count ? kAlphabet[group >> (18 - 6 * k) & 0x3F] : '=';
    }
  }
  return text;
}

std::string_view ExtensionOfLetter(char letter) {
  for (const tagFileKind& kind : AllFileKinds()) {
    if (kind.object_letter == letter && letter != 0) {
      return kind.extension;
    }
  }
  return {};
}

}  // namespace

std::string MakeObjectDownload(std::string_view name, const tagFileKind& kind, std::string_view bytes,
                               std::uint32_t row_bytes) {
  const std::string base64 = EncodeBase64(bytes);
  const std::uint16_t crc = DownloadChecksum(base64);
  const std::string crc_bytes{static_cast<char>(crc >> 8), static_cast<char>(crc & 0xFF)};
  std::string command(kObjectHead);
  command += "E:" + std::string(name) + ",B," + kind.object_letter + "," + std::to_string(bytes.size()) +
             "," + std::to_string(row_bytes) + ",:B64:";
  command += base64;
  command += ":" + ToHex(crc_bytes);
  return command;
}

std::string MakeFormatDownload(std::string_view name, std::string_view text) {
  std::string_view body = TrimBlanks(text);
  if (StartsWith(body, kFormatOpener)) {
    body.remove_prefix(kFormatOpener.size());
  }
  if (body.size() >= kFormatCloser.size() &&
      StartsWith(body.substr(body.size() - kFormatCloser.size()), kFormatCloser)) {
    body.remove_suffix(kFormatCloser.size());
  }
  const std::string upper = UpperAscii(body);
  if (upper.find(kFormatOpener) != std::string::npos || upper.find(kFormatCloser) != std::string::npos) {
    throw CFailure(
        "the file holds more than one format: store them one by one, or print it with \"tvmgr send\"");
  }
  std::string command(kFormatOpener);
  command += kFormatHead;
  command += "E:" + std::string(name);
  command += kFieldEnd;
  command += body;
  command += kFormatCloser;
  return command;
}

EDownload RecognizeDownload(std::string_view bytes) {
  if (StartsWith(SkipBlanks(bytes), kObjectHead)) {
    return EDownload::kObject;
  }
  return AfterFormatHead(bytes).empty() ? EDownload::kNone : EDownload::kFormat;
}

std::string NameInDownload(std::string_view command) {
  const bool is_object = RecognizeDownload(command) == EDownload::kObject;
  std::string_view rest =
      is_object ? SkipBlanks(command).substr(kObjectHead.size()) : AfterFormatHead(command);
  std::string_view name = TrimBlanks(rest.substr(0, rest.find_first_of(",^~")));
  const std::size_t name_end = rest.find(',');
  if (name.size() >= 2 && name[1] == ':') {
    name.remove_prefix(2);
  }
  std::string full(name);
  if (is_object && full.find('.') == std::string::npos && name_end != std::string_view::npos) {
    // The name is followed by the data's form and by the letter that stands for the extension.
    const std::size_t form_end = rest.find(',', name_end + 1);
    const std::string_view letter =
        form_end == std::string_view::npos ? std::string_view() : rest.substr(form_end + 1, 1);
    full += letter.empty() ? std::string_view() : ExtensionOfLetter(UpperAscii(letter).front());
  }
  return full;
}

}  // namespace tvmgr
