#pragma once

#include <cstdint>

#include "link/printer_port.h"
#include "platform/file_system.h"
#include "settings/full_load.h"
#include "settings/resolution_guard.h"

namespace tavira {

/** Sends a backup file back to the printer. */
class CRestore {
 public:
  CRestore(CPrinterPort& port, CResolutionGuard& guard, CFullLoad& full_load, IFileSystem& files)
      : port_(port), guard_(guard), full_load_(full_load), files_(files) {}

  /**
   * Reads the file whole, sends it as one frame inside the guard, waits for the answer, writes setting 84
   * back, saves, and loads everything. 0 (also for an empty file, and for a printer that stays silent), −2
   * without a link, −63 the file cannot be opened, −65 it cannot be read whole (nothing was sent), else the
   * code of the exchange or load. Needs memory for the file once.
   */
  std::int32_t Run(const TvmgrChar* path);

 private:
  std::int32_t Send(std::string_view frame, std::uint64_t file_size);
  void WriteModeBack();

  CPrinterPort& port_;
  CResolutionGuard& guard_;
  CFullLoad& full_load_;
  IFileSystem& files_;
};

/** How long to wait for the answer to a file of `size` bytes, in ms. */
std::uint32_t RestoreTimeout(std::int32_t port_type, std::uint64_t size);

}  // namespace tavira
