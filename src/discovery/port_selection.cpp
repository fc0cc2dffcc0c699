#include "discovery/port_selection.h"

#include <algorithm>
#include <new>
#include <string_view>

namespace tavira {
namespace {

/** An empty comment: bytes that the port library may send to a printer without effect. */
constexpr std::string_view kHarmlessCommand = "^FX^FS";

std::unique_ptr<tagPortDescription> MakeDescription(WideView port_name, const tagFoundPrinter& printer) {
  auto description = std::make_unique<tagPortDescription>();
  description->port_name = CTextHandle(port_name);
  description->device_path = CTextHandle(printer.text3);
  description->address = CTextHandle(printer.text5);
  std::copy(kHarmlessCommand.begin(), kHarmlessCommand.end(), description->data.begin());
  description->data_size = static_cast<std::int32_t>(kHarmlessCommand.size());
  return description;
}

}  // namespace

std::int32_t CPortSelection::Select(const TvmgrFoundPrinter* record, const TvmgrChar* port_name) {
  if (!port_.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  port_name_.clear();
  port_.Link().StoreDescription(nullptr);  // nothing of the earlier choice survives, whatever fails below
  tagFoundPrinter printer;
  WideString chosen_port(ViewHostText(port_name));
  if (record != nullptr) {
    printer = ReadHostRecord(*record);
    if (port_name == nullptr) {
      chosen_port = spooler_.FindPortName(printer);
    }
  } else if (port_name != nullptr) {
    spooler_.FillFromPort(chosen_port, printer);
  }
  std::int32_t result = TVMGR_OK;
  try {
    port_.Link().StoreDescription(MakeDescription(chosen_port, printer));
  } catch (const std::bad_alloc&) {
    result = TVMGR_OUT_OF_MEMORY;
  }
  port_name_ = std::move(chosen_port);
  return result;
}

std::int32_t CPortSelection::Report(TvmgrFoundPrinter* record) const {
  if (!port_.HasLink() || record == nullptr) {
    return TVMGR_NOT_INITIALIZED;
  }
  tagFoundPrinter printer;
  printer.text1 = port_name_;
  if (const tagPortDescription* description = port_.Link().StoredDescription()) {
    printer.text3 = description->device_path.View();
    printer.text5 = description->address.View();
  }
  printer.kind = printer.text5.empty() ? TVMGR_SEARCH_USB : TVMGR_SEARCH_NETWORK;
  WriteHostRecord(printer, *record);
  return TVMGR_OK;
}

}  // namespace tavira
