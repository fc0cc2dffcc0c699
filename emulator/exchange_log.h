#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "port_endpoint.h"

namespace lxemu {

/// A text file with one line for each exchange, control bytes escaped. Appends to what is there.
class CExchangeLog {
 public:
  /// An empty path writes nothing.
  explicit CExchangeLog(const std::filesystem::path& path);

  void WriteNote(std::string_view text);
  void WriteExchange(const tagExchange& exchange);

 private:
  std::ofstream file_;
};

/// "^XA^JUS^XZ (10) -> \x02…\x03\r\n (13)"; a text longer than its cut copy ends with "…".
std::string DescribeExchange(const tagExchange& exchange);

}  // namespace lxemu
