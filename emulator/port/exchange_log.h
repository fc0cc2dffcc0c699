#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "emulator/port/exchange.h"

namespace lxemu {

/// A text file with one line for each exchange, control bytes escaped. Appends to what is there.
class CExchangeLog {
 public:
  /// An empty path writes nothing; one that cannot be opened is told on standard error.
  explicit CExchangeLog(const std::filesystem::path& path);

  void WriteNote(std::string_view text);
  /// A note for somebody who reads no log: goes to standard error, too.
  void WriteProblem(std::string_view text);
  /// The label, where there are several printers, stands in front.
  void WriteExchange(const tagExchange& exchange, std::string_view label = {});

 private:
  std::ofstream file_;
};

/// "^XA^JUS^XZ (10) -> \x02…\x03\r\n (13)"; a text longer than its cut copy ends with "…".
std::string DescribeExchange(const tagExchange& exchange);

}  // namespace lxemu
