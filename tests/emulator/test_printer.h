#pragma once

#include <cstdint>
#include <string>

#include "emulator/printer/printer.h"

namespace lxemu {

/// A printer whose time stands still until the test moves it.
struct tagTestPrinter {
  std::uint64_t now = 1'000'000;
  CPrinter printer{[this] { return now; }};

  std::string operator()(std::string_view commands) { return printer.Execute(commands); }
};

/// An answer frame around the payload.
inline std::string Framed(std::string_view payload) {
  return "\x02" + std::string(payload) + "\x03\r\n";
}

}  // namespace lxemu
