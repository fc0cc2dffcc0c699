#include "link/printer_port.h"

#include <new>

namespace tavira {

std::int32_t CPrinterPort::Start() {
  if (HasLink()) {
    return TVMGR_OK;
  }
  link_.reset(new (std::nothrow) CPortLink(modules_));
  return HasLink() ? link_->Start() : TVMGR_OUT_OF_MEMORY;
}

std::string& CPrinterPort::NewCommand() {
  link_->SendBuffer().clear();
  link_->ReceiveBuffer().clear();
  return link_->SendBuffer();
}

std::int32_t CPrinterPort::Exchange(std::uint32_t timeout_ms) {
  if (!link_->IsStarted()) {
    return TVMGR_NOT_INITIALIZED;
  }
  const tagPortDescription description = link_->ExchangeDescription();
  return RunTransaction(*link_, clock_, &description, timeout_ms);
}

}  // namespace tavira
