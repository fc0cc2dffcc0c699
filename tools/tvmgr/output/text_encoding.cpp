#include "output/text_encoding.h"

#include <windows.h>

#include <algorithm>

#include "output/command_error.h"
#include "output/text_layout.h"

namespace tvmgr {
namespace {

// Windows counts characters in int; no text of this program comes near that.
int Count(std::size_t size) {
  return static_cast<int>(size);
}

std::optional<std::wstring> Widen(UINT code_page, DWORD flags, std::string_view bytes) {
  if (bytes.empty()) {
    return std::wstring();
  }
  const int needed = MultiByteToWideChar(code_page, flags, bytes.data(), Count(bytes.size()), nullptr, 0);
  if (needed <= 0) {
    return std::nullopt;
  }
  std::wstring wide(static_cast<std::size_t>(needed), L'\0');
  MultiByteToWideChar(code_page, flags, bytes.data(), Count(bytes.size()), wide.data(), needed);
  return wide;
}

bool IsControl(wchar_t c) {
  return c < 0x20 || (c >= 0x7F && c <= 0x9F);
}

void AppendEscaped(std::string& text, unsigned char byte) {
  text += "\\x";
  text += ToHex(std::string_view(reinterpret_cast<const char*>(&byte), 1));
}

}  // namespace

std::wstring ToWide(std::string_view utf8) {
  return Widen(CP_UTF8, 0, utf8).value_or(std::wstring());
}

std::string ToUtf8(std::wstring_view wide) {
  if (wide.empty()) {
    return {};
  }
  const int needed =
      WideCharToMultiByte(CP_UTF8, 0, wide.data(), Count(wide.size()), nullptr, 0, nullptr, nullptr);
  std::string utf8(static_cast<std::size_t>(std::max(needed, 0)), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide.data(), Count(wide.size()), utf8.data(), needed, nullptr, nullptr);
  return utf8;
}

std::optional<std::string> ToAnsi(std::string_view utf8) {
  const std::wstring wide = ToWide(utf8);
  if (wide.empty()) {
    return std::string();
  }
  // Without the flag Windows would quietly send a look-alike character instead.
  BOOL replaced = FALSE;
  const int needed = WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), Count(wide.size()),
                                         nullptr, 0, nullptr, &replaced);
  if (needed <= 0 || replaced) {
    return std::nullopt;
  }
  std::string bytes(static_cast<std::size_t>(needed), '\0');
  WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), Count(wide.size()), bytes.data(), needed,
                      nullptr, nullptr);
  return bytes;
}

std::string RequireAnsi(std::string_view utf8) {
  std::optional<std::string> bytes = ToAnsi(utf8);
  if (!bytes) {
    throw CUsageError(
        "\"" + std::string(utf8) +
        "\" has characters that the system's ANSI code page lacks; the printer cannot take them");
  }
  return *std::move(bytes);
}

std::optional<std::string> FromAnsi(std::string_view bytes) {
  const std::optional<std::wstring> wide = Widen(CP_ACP, MB_ERR_INVALID_CHARS, bytes);
  if (!wide) {
    return std::nullopt;
  }
  return ToUtf8(*wide);
}

std::string EscapeBytes(std::string_view bytes) {
  std::string text;
  const std::optional<std::wstring> wide = Widen(CP_ACP, MB_ERR_INVALID_CHARS, bytes);
  if (!wide) {
    for (const char c : bytes) {
      if (IsPlainAscii(std::string_view(&c, 1)) && c != '\\') {
        text += c;
      } else {
        AppendEscaped(text, static_cast<unsigned char>(c));
      }
    }
    return text;
  }
  for (std::size_t i = 0; i < wide->size(); ++i) {
    const wchar_t c = (*wide)[i];
    if (c == L'\\') {
      text += "\\\\";
    } else if (IsControl(c)) {
      AppendEscaped(text, static_cast<unsigned char>(c));
    } else {
      // Code points beyond 16 bits stand as two units, which only convert together.
      const std::size_t units = (c >= 0xD800 && c <= 0xDBFF && i + 1 < wide->size()) ? 2 : 1;
      text += ToUtf8(std::wstring_view(*wide).substr(i, units));
      i += units - 1;
    }
  }
  return text;
}

std::string BytesOfShown(std::string_view utf8) {
  std::optional<std::string> bytes = UndoEscapes(utf8, RequireAnsi);
  if (!bytes) {
    throw CUsageError("\"" + std::string(utf8) +
                      "\": a backslash stands in front of xNN (a byte) or of another backslash");
  }
  return *std::move(bytes);
}

}  // namespace tvmgr
