#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "link/printer_port.h"
#include "platform/text_codec.h"
#include "platform/wide_string.h"

namespace tavira {

/** One file in printer memory. */
struct tagDataFile {
  WideString name;         /**< with extension, without device letter; empty when the listing has none */
  std::uint8_t p_mark = 0; /**< 1 when the listing marks the file with "P" */
};

/** The eight lists of files that the printer last reported. */
class CRegisteredFiles {
 public:
  CRegisteredFiles(CPrinterPort& port, ITextCodec& text) : port_(port), text_(text) {}

  /**
   * Replaces one list with what the printer reports, in one transaction. 0, −2 without a link, −7 for no such
   * list, else as CPrinterPort::Exchange; the list is unchanged after a failure.
   */
  std::int32_t Refresh(std::int32_t list);

  /** Refreshes all eight, one transaction each; stops at the first failure. */
  std::int32_t RefreshAll();

  /** Whether one of the lists holds a file of that name, the case of letters ignored. */
  bool IsListed(std::initializer_list<std::int32_t> lists, WideView name) const;

  /** As IsListed, with the name as the printer writes it, up to a zero byte. */
  bool IsListed(std::initializer_list<std::int32_t> lists, std::string_view ansi_name) const;

  /** The files of a list; null when there is no such list. */
  const std::vector<tagDataFile>* Find(std::int32_t list) const;

  /** `count` receives the number of files. 0, or −7 for null or no such list. */
  std::int32_t GetCount(std::int32_t list, std::uint32_t* count) const;

  /**
   * `name` null: `length` receives the characters of the file's name. Otherwise copies name and terminator; a
   * capacity `*length` that cannot hold them ends the process. 0, or −7 for null, no such list, or an index
   * at or beyond the count. Throws std::invalid_argument for a negative index.
   */
  std::int32_t GetName(std::int32_t list, std::int32_t index, TvmgrChar* name, std::uint32_t* length) const;

 private:
  static constexpr std::size_t kListCount = 8;

  CPrinterPort& port_;
  ITextCodec& text_;
  std::array<std::vector<tagDataFile>, kListCount> files_;
};

}  // namespace tavira
