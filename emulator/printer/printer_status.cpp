#include "emulator/printer/printer_status.h"

namespace lxemu {

void CPrinterStatus::BusyFor(std::uint32_t ms, std::string_view kind) {
  busy_kind_ = kind;
  busy_until_ = now_() + ms;
}

void CPrinterStatus::Reset() {
  held_ = "IL";
  busy_until_ = 0;
}

std::string CPrinterStatus::Text() const {
  if (held_ == "IL" && now_() < busy_until_) {
    return busy_kind_;
  }
  return held_;
}

}  // namespace lxemu
