#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "discovery/found_printer.h"
#include "discovery/search/tv_async_socket.h"
#include "discovery/usb/usb_printer_source.h"
#include "platform/mutex.h"

namespace tavira {

/**
 * The timed printer search over USB or the network.
 *
 * A start returns at once; a worker thread sleeps the whole search time, also when the host ends the search before,
 * and then ends the search. All operations may be called from several threads; destruction only when none of them
 * runs.
 */
class CPrinterSearch {
 public:
  /** What is passed by reference outlives the object and is used by its worker too. */
  CPrinterSearch(const tagNetPlatform& platform, IUsbPrinterSource& usb, const tagSearchNetwork& network = {},
                 std::uint32_t search_time_s = 3);

  /**
   * Waits for the worker of the last search, which sleeps out the search time (3 s from the start); printers that are
   * being asked are given up.
   */
  ~CPrinterSearch();
  CPrinterSearch(const CPrinterSearch&) = delete;
  CPrinterSearch& operator=(const CPrinterSearch&) = delete;

  /**
   * Starts a search of one kind after waiting for the earlier search's worker: up to 3 s from that search's start, and
   * up to 36 s more while it asks printers that have fallen silent. A network search that fails to start is stopped
   * at once. `timeout` changes nothing: a search always takes the search time.
   *
   * 0, −3 no memory for the search, −9 the broadcast failed, −7 unknown kind, −1 no thread to end the search
   * (the host's stop does then).
   */
  std::int32_t Start(std::uint32_t kind, std::uint32_t timeout);

  /**
   * Ends the search and makes its results. 0, −7 unknown kind, −3 no memory for the results.
   *
   * Asks the network printers that have announced themselves for their names, all at the same time, once per search:
   * as long as the slowest of them takes, at most 36 s (two answers of up to 18 s), however many are silent.
   */
  std::int32_t Stop(std::uint32_t kind);

  /**
   * For good: printers that are being asked are given up within 100 ms, without results, and none are asked any more.
   * Any thread; does not wait.
   */
  void GiveUp() { given_up_ = true; }

  /** 1 while a search runs, else 0. Never waits for a search. */
  std::int32_t Status() const;

  /**
   * Writes the number of printers of the last search of a kind, and the printer `index` into the host's
   * record when there is such a one; both may be null. 0 or −7. Waits while the results of that kind are
   * made: up to 36 s.
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
  void RunWorker(std::uint32_t kind) noexcept;
  void WaitOutSearch(std::uint32_t kind);

  const tagNetPlatform platform_;
  IUsbPrinterSource& usb_;
  const tagSearchNetwork network_settings_;
  const std::uint32_t search_time_ms_;

  std::atomic<bool> given_up_{false};

  // Taken in this order where two are held.
  CMutex starts_lock_;  // one start at a time, the wait for the earlier worker included
  CMutex start_stop_lock_;
  mutable CMutex usb_list_lock_;
  mutable CMutex network_list_lock_;
  mutable CMutex status_lock_;

  bool has_results_[2] = {};  // of the last search, by kind; under start_stop_lock_
  std::int32_t status_ = 0;
  std::vector<tagUsbRawEntry> usb_raw_;
  FoundList usb_found_;
  // Replaced only while no worker runs, which uses it without the list's lock.
  std::unique_ptr<CTVAsyncSocket> network_;
  FoundList network_found_;
  std::unique_ptr<IThread> worker_;  // under starts_lock_; it uses all of the above
};

}  // namespace tavira
