#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "emulator/network/search_plan.h"
#include "emulator/port/fault_plan.h"
#include "emulator/printer/printer.h"
#include "emulator/printer/quirks.h"

namespace lxemu {

/// What `printer.ini` says about a printer; the README lists the keys.
struct tagPrinterIni {
  tagQuirks quirks;
  tagFaultPlan faults;
  tagSearchPlan search;
  std::map<std::string, std::string> factory;
  std::string state = "IL";
  std::uint32_t busy_ms = 0;
  /// One text for each line that was not understood and so has no effect.
  std::vector<std::string> problems;
};

/// Reads the text of an ini file. What is not mentioned keeps its default; the latency default is 20 ms here.
tagPrinterIni ReadPrinterIni(std::string_view text);

/// Gives a printer the quirks, the state and the busy time of the ini; its factory settings come into force
/// with the next ^JUF or FactoryReset.
void ApplyIni(const tagPrinterIni& ini, CPrinter& printer);

}  // namespace lxemu
