#pragma once

#include "discovery/found_printer.h"

namespace tavira {

/** Matches ports of the print spooler with printers. Nothing found is no error: texts stay empty. */
class ISpoolerLookup {
 public:
  virtual ~ISpoolerLookup() = default;

  /** Fills the device path (text3) or the address (text5) of the printer on a spooler port. */
  virtual void FillFromPort(WideView port_name, tagFoundPrinter& printer) = 0;

  /** The name of the spooler port of a printer; empty when none is installed. */
  virtual WideString FindPortName(const tagFoundPrinter& printer) = 0;
};

}  // namespace tavira
