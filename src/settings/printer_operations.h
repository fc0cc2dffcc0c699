#pragma once

#include <cstdint>
#include <string>

#include "link/printer_port.h"
#include "settings/full_load.h"
#include "settings/printer_status.h"
#include "settings/resolution_guard.h"
#include "settings/setting_store.h"
#include "storage/registered_files.h"

namespace tavira {

/** Holds one operation request and runs it. */
class CPrinterOperations {
 public:
  CPrinterOperations(CPrinterPort& port, CSettingStore& store, CResolutionGuard& guard, CFullLoad& full_load,
                     CRegisteredFiles& files, CBackgroundFile& background, CPrinterStatus& status)
      : port_(port),
        store_(store),
        guard_(guard),
        full_load_(full_load),
        files_(files),
        background_(background),
        status_(status) {}

  /**
   * Replaces the code; the data only when `data` is not null and `length` is at least 1. Throws
   * std::bad_alloc.
   */
  void SetRequest(std::uint32_t code, const std::uint8_t* data, std::int32_t length);

  /**
   * Sends the request's commands, waits until the printer is not busy, reloads what it may have changed. 0,
   * −2 without a link, −7 unknown code or no data to send, else the code of the step that failed.
   */
  std::int32_t Execute();

 private:
  std::int32_t SendOperation(std::string_view commands);
  std::int32_t WriteSetting42(std::string_view value, bool save);
  std::int32_t FollowUp();

  CPrinterPort& port_;
  CSettingStore& store_;
  CResolutionGuard& guard_;
  CFullLoad& full_load_;
  CRegisteredFiles& files_;
  CBackgroundFile& background_;
  CPrinterStatus& status_;
  std::uint32_t code_ = 0;
  std::string data_;
};

}  // namespace tavira
