#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tvmgr {

// What a trace says of bytes. Pure.

/** Bytes between quotation marks: printable ASCII as it is, \" \\ \r \n, and \xHH for everything else. */
std::string QuotedBytes(std::string_view bytes);

/** What QuotedBytes has made of them; none when the text is not of that form. */
std::optional<std::string> BytesOfQuoted(std::string_view quoted);

/** The bytes in full, or "12 bytes, SHA-256 ..." in place of them. */
std::string DescribeBytes(std::string_view bytes, bool in_full);

/**
 * True for bytes to or from the printer that concern its settings, its state and the names of its files, and nothing else: these
 * say nothing that the calls of the module do not say. All others may be contents of files.
 */
bool IsSettingsTalk(std::string_view bytes);

/**
 * Takes the contents of files out of the lines of a transcript, which the recorder in front of the port library has written
 * (recorder/README.md): what is sent stays when it is settings talk, and so does the answer to it, as long as that looks like one.
 */
class CTranscriptFilter {
 public:
  /** @param left_out  not shown either, whatever it looks like */
  explicit CTranscriptFilter(bool with_contents, std::vector<std::string> left_out = {})
      : with_contents_(with_contents), left_out_(std::move(left_out)) {}

  /** A line of the transcript, without its end. */
  std::string Filter(std::string_view line);

 private:
  /** True when what was received are frames that answer questions for settings or names, or a piece of such. */
  bool TakeAnswer(std::string_view bytes);

  bool IsLeftOut(std::string_view bytes) const;

  bool with_contents_;
  std::vector<std::string> left_out_;
  bool is_settings_talk_ = false; /**< what was sent last, and what came since */
  bool is_within_frame_ = false;  /**< what came last broke off there */
};

}  // namespace tvmgr
