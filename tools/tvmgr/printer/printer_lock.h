#pragma once

#include <string>

#include "options/options.h"
#include "output/console.h"
#include "printer/printer_choice.h"

namespace tvmgr {

/**
 * Sees to it that one tvmgr at a time works with a printer, among all sessions of this computer. Printers are told
 * apart by address, else by device path, else by port: one that is chosen by two host names counts as two.
 */
class CPrinterLock {
 public:
  /**
   * Waits while another tvmgr has the printer, and says so; Ctrl-C and ten minutes of waiting end the
   * command.
   *
   * @param printer  what is known of it
   * @param name     how it is called in messages
   */
  CPrinterLock(const tagGlobalOptions& options, const tagPrinterChoice& printer, const std::string& name,
               const CInterruptWait& interrupt);
  ~CPrinterLock();
  CPrinterLock(const CPrinterLock&) = delete;
  CPrinterLock& operator=(const CPrinterLock&) = delete;

 private:
  void* mutex_ = nullptr; /**< null: there is none, the work goes on without */
};

}  // namespace tvmgr
