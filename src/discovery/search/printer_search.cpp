#include "discovery/search/printer_search.h"

#include <algorithm>
#include <new>
#include <stdexcept>

namespace tavira {
namespace {

constexpr std::uint32_t kUsb = TVMGR_SEARCH_USB;
constexpr std::uint32_t kNetwork = TVMGR_SEARCH_NETWORK;

// How often the worker looks after the broadcast socket.
constexpr std::uint32_t kServeEveryMs = 20;

tagFoundPrinter MakeRecord(const tagUsbRawEntry& entry) {
  return {TVMGR_SEARCH_USB,    entry.model,          entry.device_id,    entry.device_path,
          entry.vendor_number, entry.product_number, entry.product_name, {}};
}

}  // namespace

CPrinterSearch::CPrinterSearch(const tagNetPlatform& platform, IUsbPrinterSource& usb,
                               const tagSearchNetwork& network, std::uint32_t search_time_s)
    : platform_(platform), usb_(usb), network_settings_(network), search_time_ms_(search_time_s * 1000) {}

CPrinterSearch::~CPrinterSearch() {
  GiveUp();
  worker_.reset();
}

std::int32_t CPrinterSearch::Start(std::uint32_t kind, std::uint32_t) {
  const std::lock_guard starts_guard(starts_lock_);
  // Outside the start-stop lock, which the worker itself needs for its stop.
  worker_.reset();
  const std::lock_guard guard(start_stop_lock_);
  SetStatus(1);
  const std::int32_t result = OpenSearch(kind);
  return StartWorker(kind) ? result : TVMGR_PORT_NOT_READY;
}

std::int32_t CPrinterSearch::OpenSearch(std::uint32_t kind) {
  if (kind == kUsb) {
    return OpenUsb();
  }
  if (kind != kNetwork) {
    return TVMGR_BAD_ARGUMENT;
  }
  const std::int32_t result = OpenNetwork();
  if (result != TVMGR_OK) {
    EndSearch(kind);
  }
  return result;
}

std::int32_t CPrinterSearch::OpenUsb() {
  const std::lock_guard guard(usb_list_lock_);
  has_results_[kUsb] = false;
  usb_raw_.clear();
  try {
    usb_raw_ = usb_.Enumerate();
    return TVMGR_OK;
  } catch (const std::bad_alloc&) {
    return TVMGR_OUT_OF_MEMORY;
  }
}

std::int32_t CPrinterSearch::OpenNetwork() {
  const std::lock_guard guard(network_list_lock_);
  has_results_[kNetwork] = false;
  network_.reset();
  try {
    network_ = std::make_unique<CTVAsyncSocket>(platform_, network_settings_);
    return network_->OpenBroadcast() ? TVMGR_OK : TVMGR_SEARCH_FAILED;
  } catch (const std::bad_alloc&) {
    return TVMGR_OUT_OF_MEMORY;
  }
}

std::int32_t CPrinterSearch::Stop(std::uint32_t kind) {
  const std::lock_guard guard(start_stop_lock_);
  return EndSearch(kind);
}

std::int32_t CPrinterSearch::EndSearch(std::uint32_t kind) {
  const std::int32_t result = MakeResults(kind);
  SetStatus(0);
  return result;
}

std::int32_t CPrinterSearch::MakeResults(std::uint32_t kind) {
  if (kind != kUsb && kind != kNetwork) {
    return TVMGR_BAD_ARGUMENT;
  }
  if (has_results_[kind]) {
    return TVMGR_OK;  // the worker comes after the host: what was found stays, even without memory for a copy
  }
  try {
    kind == kUsb ? MakeUsbResults() : MakeNetworkResults();
    return TVMGR_OK;
  } catch (const std::bad_alloc&) {
    return TVMGR_OUT_OF_MEMORY;
  }
}

void CPrinterSearch::MakeUsbResults() {
  const std::lock_guard guard(usb_list_lock_);
  usb_found_.clear();
  std::transform(usb_raw_.begin(), usb_raw_.end(), std::back_inserter(usb_found_), MakeRecord);
  has_results_[kUsb] = true;
}

void CPrinterSearch::MakeNetworkResults() {
  if (!network_) {
    return;
  }
  const std::lock_guard guard(network_list_lock_);
  network_found_.clear();
  const bool is_collected = network_->Collect(given_up_);
  network_found_ = network_->FoundPrinters();
  has_results_[kNetwork] = is_collected;
}

std::int32_t CPrinterSearch::Status() const {
  const std::lock_guard guard(status_lock_);
  return status_;
}

void CPrinterSearch::SetStatus(std::int32_t status) {
  const std::lock_guard guard(status_lock_);
  status_ = status;
}

std::int32_t CPrinterSearch::GetInfo(std::int32_t kind, std::int32_t index, TvmgrFoundPrinter* record,
                                     std::uint32_t* count) const {
  if (kind != TVMGR_SEARCH_USB && kind != TVMGR_SEARCH_NETWORK) {
    return TVMGR_BAD_ARGUMENT;
  }
  const bool is_usb = kind == TVMGR_SEARCH_USB;
  const std::lock_guard guard(is_usb ? usb_list_lock_ : network_list_lock_);
  const FoundList& found = is_usb ? usb_found_ : network_found_;
  if (count != nullptr) {
    *count = static_cast<std::uint32_t>(found.size());
  }
  if (record == nullptr) {
    return TVMGR_OK;
  }
  if (index < 0) {
    throw std::invalid_argument("index");
  }
  if (static_cast<std::size_t>(index) < found.size()) {
    WriteHostRecord(found[static_cast<std::size_t>(index)], *record);
  }
  return TVMGR_OK;
}

bool CPrinterSearch::StartWorker(std::uint32_t kind) {
  try {
    std::uint32_t error = 0;
    worker_ = platform_.threads.Start([this, kind] { RunWorker(kind); }, error);
  } catch (const std::bad_alloc&) {  // as without a thread
  }
  return worker_ != nullptr;
}

void CPrinterSearch::RunWorker(std::uint32_t kind) noexcept {
  WaitOutSearch(kind);
  Stop(kind);
}

void CPrinterSearch::WaitOutSearch(std::uint32_t kind) {
  std::uint32_t waited = 0;
  std::uint32_t last_reading = platform_.clock.TickCount();
  while (waited < search_time_ms_) {
    platform_.clock.Sleep(std::min(kServeEveryMs, search_time_ms_ - waited));
    if (kind == kNetwork && network_) {
      network_->Serve();
    }
    const std::uint32_t now = platform_.clock.TickCount();
    waited += now - last_reading;
    last_reading = now;
  }
}

}  // namespace tavira
