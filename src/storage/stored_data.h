#pragma once

#include <cstdint>
#include <string>

#include "link/printer_port.h"
#include "platform/text_codec.h"

namespace tavira {

/** Reading modes: 1 fetches a stored format, every other value an object (graphic, font, background file). */
inline constexpr std::uint8_t kObjectMode = 0;
inline constexpr std::uint8_t kFormatMode = 1;

/** Fetches one stored file from the printer's device E: and keeps its data. */
class CStoredData {
 public:
  CStoredData(CPrinterPort& port, ITextCodec& text) : port_(port), text_(text) {}

  /**
   * Fetches a file. 0 (also for an empty answer), −2 without a link, −7 a name that is null, empty or not to be
   * written in the code page (nothing sent), −10 payload that cannot be decoded, else as CPrinterPort::Exchange; after a failed exchange both buffers keep what they
   * held.
   */
  std::int32_t Load(const TvmgrChar* name, std::uint8_t mode, std::uint32_t timeout_ms);

  /**
   * `length` receives the full size in bytes; up to the size it came with are copied when `buffer` is not
   * null. 0, or −7 when `length` is null.
   */
  std::int32_t Get(std::uint8_t* buffer, std::uint32_t* length) const;

  /** The file's bytes as the last fetch took them out of the answer. */
  const std::string& Data() const { return data_; }

  /** The printer's own download command for the file: the last fetch's whole answer, until released. */
  const std::string& RawAnswer() const { return raw_answer_; }
  void ReleaseRawAnswer() { std::string().swap(raw_answer_); }

 private:
  CPrinterPort& port_;
  ITextCodec& text_;
  std::string raw_answer_;
  std::string data_;
};

}  // namespace tavira
