#pragma once

#include <string>

#include "options/options.h"
#include "output/console.h"
#include "printer/printer_choice.h"

namespace tvmgr {

/**
 * Sees to it that one tvmgr at a time works with a printer, among all sessions of this computer. Printers are
 * told apart by how they were chosen: the same one by its port and by its address counts as two.
 */
class CPrinterLock {
 public:
  /**
   * Waits while another tvmgr has the printer, and says so; Ctrl-C and ten minutes of waiting end the
   * command.
   */
  CPrinterLock(const tagGlobalOptions& options, const tagPrinterChoice& choice,
               const CInterruptWait& interrupt);
  ~CPrinterLock();
  CPrinterLock(const CPrinterLock&) = delete;
  CPrinterLock& operator=(const CPrinterLock&) = delete;

 private:
  void* mutex_ = nullptr; /**< null: there is none, the work goes on without */
};

}  // namespace tvmgr
