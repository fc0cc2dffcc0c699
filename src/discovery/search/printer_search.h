#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

#include "discovery/found_printer.h"
#include "discovery/search/tv_async_socket.h"
#include "discovery/usb/usb_printer_source.h"

namespace tavira {

/**
 * The timed printer search over USB or the network.
 *
 * A start returns at once; a worker thread ends the search after its time, or the host does before. All
 * operations may be called from several threads; destruction only when none of them runs.
 */
class CPrinterSearch {
 public:
  /** What is passed by reference outlives the object and is used by its worker too. */
  CPrinterSearch(ISockets& sockets, IClock& clock, ITextCodec& codec, IUsbPrinterSource& usb,
                 const tagSearchNetwork& network = {}, std::uint32_t search_time_s = 3);

  /**
   * Ends a running search: waits for its worker, at most as long as a search
   * or one silent printer takes (3 s).
   */
  ~CPrinterSearch();
  CPrinterSearch(const CPrinterSearch&) = delete;
  CPrinterSearch& operator=(const CPrinterSearch&) = delete;

  /**
   * Starts a search of one kind after waiting for an earlier search's end. A network search that fails to
   * start is stopped at once. `timeout` changes nothing: a search always takes the search time.
   *
   * 0, −3 no memory for the search, −9 the broadcast failed, −7 unknown kind, −1 no thread to end the search
   * (the host's stop does then).
   */
  std::int32_t Start(std::uint32_t kind, std::uint32_t timeout);

  /**
   * Ends the search and makes its results. 0, −7 unknown kind, −3 no memory for the results.
   *
   * Asks every network printer that has announced itself for its names, once per search. Two questions; each
   * that a printer leaves unanswered costs 18 s.
   */
  std::int32_t Stop(std::uint32_t kind);

  /** 1 while a search runs, else 0. Never waits for a search. */
  std::int32_t Status() const;

  /**
   * Writes the number of printers of the last search of a kind, and the printer `index` into the host's
   * record when there is such a one; both may be null. 0 or −7. Waits while the results of that kind are
   * made.
   *
   * Throws std::invalid_argument for a negative index with a record, std::bad_alloc with the record
   * unchanged.
   */
  std::int32_t GetInfo(std::int32_t kind, std::int32_t index, TvmgrFoundPrinter* record,
                       std::uint32_t* count) const;

 private:
  using FoundList = std::vector<tagFoundPrinter>;

  std::int32_t OpenSearch(std::uint32_t kind);
  std::int32_t OpenUsb();
  std::int32_t OpenNetwork();
  std::int32_t EndSearch(std::uint32_t kind);
  std::int32_t MakeResults(std::uint32_t kind);
  void MakeUsbResults();
  void MakeNetworkResults();
  void SetStatus(std::int32_t status);
  bool StartWorker(std::uint32_t kind);
  void WaitForWorker();
  void RunWorker(std::uint32_t kind) noexcept;
  void WaitOutSearch(std::uint32_t kind);

  ISockets& sockets_;
  IClock& clock_;
  ITextCodec& codec_;
  IUsbPrinterSource& usb_;
  const tagSearchNetwork network_settings_;
  const std::uint32_t search_time_ms_;

  std::mutex starts_lock_;       // one start at a time, the wait for the earlier worker included
  std::thread worker_;           // under starts_lock_
  std::mutex worker_runs_lock_;  // no semaphore: MinGW's can miss its wake-up
  std::condition_variable worker_runs_changed_;
  bool worker_runs_ = false;
  std::stop_source closing_;

  // Taken in this order where two are held.
  std::mutex start_stop_lock_;
  mutable std::mutex usb_list_lock_;
  mutable std::mutex network_list_lock_;
  mutable std::mutex status_lock_;

  std::uint32_t kind_ = 2;  // of the last search, under start_stop_lock_; 2: none yet
  std::atomic<bool> is_ended_{true};
  std::int32_t status_ = 0;
  std::vector<tagUsbRawEntry> usb_raw_;
  FoundList usb_found_;
  // Replaced only while no worker runs, which uses it without the list's lock.
  std::unique_ptr<CTVAsyncSocket> network_;
  FoundList network_found_;
};

}  // namespace tavira
