#include "discovery/search/printer_search.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <system_error>

namespace tavira {
namespace {

constexpr std::uint32_t kUsb = TVMGR_SEARCH_USB;
constexpr std::uint32_t kNetwork = TVMGR_SEARCH_NETWORK;

// How often the worker looks after the broadcast socket and for an early end of the search.
constexpr std::uint32_t kTurnMs = 20;

tagFoundPrinter MakeRecord(const tagUsbRawEntry& entry) {
  return {TVMGR_SEARCH_USB,    entry.model,          entry.device_id,    entry.device_path,
          entry.vendor_number, entry.product_number, entry.product_name, {}};
}

}  // namespace

CPrinterSearch::CPrinterSearch(ISockets& sockets, IClock& clock, ITextCodec& codec, IUsbPrinterSource& usb,
                               const tagSearchNetwork& network, std::uint32_t search_time_s)
    : sockets_(sockets),
      clock_(clock),
      codec_(codec),
      usb_(usb),
      network_settings_(network),
      search_time_ms_(search_time_s * 1000) {}

CPrinterSearch::~CPrinterSearch() {
  closing_.request_stop();
  WaitForWorker();
}

std::int32_t CPrinterSearch::Start(std::uint32_t kind, std::uint32_t) {
  const std::lock_guard starts_guard(starts_lock_);
  // Outside the start-stop lock, which the worker itself needs for its stop.
  WaitForWorker();
  const std::lock_guard guard(start_stop_lock_);
  kind_ = kind;
  is_ended_ = false;
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
  network_.reset();
  try {
    network_ = std::make_unique<CTVAsyncSocket>(sockets_, clock_, codec_, network_settings_);
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
  if (kind == kind_) {
    is_ended_ = true;
  }
  SetStatus(0);
  return result;
}

std::int32_t CPrinterSearch::MakeResults(std::uint32_t kind) {
  try {
    if (kind == kUsb) {
      MakeUsbResults();
    } else if (kind == kNetwork) {
      MakeNetworkResults();
    } else {
      return TVMGR_BAD_ARGUMENT;
    }
    return TVMGR_OK;
  } catch (const std::bad_alloc&) {
    return TVMGR_OUT_OF_MEMORY;
  }
}

void CPrinterSearch::MakeUsbResults() {
  const std::lock_guard guard(usb_list_lock_);
  usb_found_.clear();
  std::transform(usb_raw_.begin(), usb_raw_.end(), std::back_inserter(usb_found_), MakeRecord);
}

void CPrinterSearch::MakeNetworkResults() {
  if (!network_) {
    return;
  }
  const std::lock_guard guard(network_list_lock_);
  network_found_.clear();
  network_->Collect(closing_.get_token());
  network_found_ = network_->FoundPrinters();
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
  worker_runs_ = false;
  try {
    worker_ = std::thread(&CPrinterSearch::RunWorker, this, kind);
  } catch (const std::system_error&) {
    return false;
  } catch (const std::bad_alloc&) {
    return false;
  }
  std::unique_lock guard(worker_runs_lock_);
  worker_runs_changed_.wait(guard, [this] { return worker_runs_; });
  return true;
}

void CPrinterSearch::WaitForWorker() {
  if (worker_.joinable()) {
    worker_.join();
  }
}

void CPrinterSearch::RunWorker(std::uint32_t kind) noexcept {
  {
    const std::lock_guard guard(worker_runs_lock_);
    worker_runs_ = true;
    worker_runs_changed_.notify_one();
  }
  WaitOutSearch(kind);
  if (!closing_.stop_requested()) {
    Stop(kind);
  }
}

void CPrinterSearch::WaitOutSearch(std::uint32_t kind) {
  std::uint32_t waited = 0;
  std::uint32_t last_reading = clock_.TickCount();
  while (waited < search_time_ms_ && !is_ended_ && !closing_.stop_requested()) {
    clock_.Sleep(std::min(kTurnMs, search_time_ms_ - waited));
    if (kind == kNetwork && network_) {
      network_->Serve();
    }
    const std::uint32_t now = clock_.TickCount();
    waited += now - last_reading;
    last_reading = now;
  }
}

}  // namespace tavira
