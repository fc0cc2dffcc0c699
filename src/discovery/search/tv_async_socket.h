#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "discovery/found_printer.h"
#include "discovery/network/net_platform.h"
#include "discovery/search/search_protocol.h"
#include "platform/mutex.h"

namespace tavira {

/** Where a network search asks. */
struct tagSearchNetwork {
  std::uint32_t broadcast_address = 0xFFFFFFFF;
  std::uint16_t port = kSearchPort;
};

/** So many printers are asked in one search; the announcements of more are not kept. */
inline constexpr std::size_t kMaxSearchedPrinters = 1024;

/**
 * One network search: the datagram socket that broadcasts and hears the printers announce themselves, and the
 * questions to all of them afterwards.
 *
 * The socket never waits and has no thread of its own: whoever waits out the search calls Serve now and then.
 */
class CTVAsyncSocket {
 public:
  CTVAsyncSocket(const tagNetPlatform& platform, const tagSearchNetwork& network);

  /** Forgets what an earlier search found and broadcasts. False when the socket or the datagram failed. */
  bool OpenBroadcast();

  /** Takes the announcements that have arrived, while the search goes on. Any thread. */
  void Serve();

  /**
   * Ends the search, then asks every printer that has announced itself for its names: at most 36 s. Asks once
   * per search: later calls change nothing. Given up, with nothing found, when that is set: within 100 ms.
   * False then. Throws std::bad_alloc; a later call asks again.
   */
  bool Collect(const std::atomic<bool>& given_up);

  /** The printers that Collect found, in the order of their announcements. */
  std::vector<tagFoundPrinter> FoundPrinters();

 private:
  bool MakeSocket();
  void TakeAnnouncements(int most);
  void OnReceive();

  const tagNetPlatform platform_;
  const tagSearchNetwork network_;

  CMutex lock_;  // for all below
  CSocket socket_;
  bool is_searching_ = false;
  bool is_collected_ = false;
  std::vector<std::uint32_t> addresses_;  // each once
  std::vector<tagFoundPrinter> found_;
};

}  // namespace tavira
