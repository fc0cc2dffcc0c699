#pragma once

#include <string>
#include <string_view>

#include "platform/lead_bytes.h"
#include "platform/wide_string.h"

namespace tavira {

/**
 * Conversion between wide text and the system's ANSI code page, in which the printer and host files are
 * written.
 */
class ITextCodec {
 public:
  virtual ~ITextCodec() = default;

  /** Characters that the code page lacks become its replacement character, never one that merely looks alike. */
  virtual std::string ToAnsi(WideView text) = 0;

  virtual WideString FromAnsi(std::string_view bytes) = 0;

  /** Whether `ansi`, made of `text` by ToAnsi, still says the same: nothing was replaced. */
  bool IsWhole(WideView text, std::string_view ansi) { return FromAnsi(ansi) == text; }

  /** Of the code page; unless overridden it has one byte a character. */
  virtual CLeadBytes LeadBytes() { return {}; }
};

}  // namespace tavira
