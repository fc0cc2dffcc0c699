#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "discovery/found_printer.h"
#include "discovery/search/search_protocol.h"
#include "platform/clock.h"
#include "platform/sockets.h"
#include "platform/text_codec.h"

namespace tavira {

/** Where a network search asks. */
struct tagSearchNetwork {
  std::uint32_t broadcast_address = 0xFFFFFFFF;
  std::uint16_t port = kSearchPort;
};

/**
 * One network search: the datagram socket that broadcasts and hears the printers announce themselves, and the
 * questions to each of them afterwards.
 *
 * The socket never waits and has no thread of its own: whoever waits out the search calls Serve now and then.
 */
class CTVAsyncSocket {
 public:
  CTVAsyncSocket(ISockets& sockets, IClock& clock, ITextCodec& codec, const tagSearchNetwork& network);

  /** Forgets what an earlier search found and broadcasts. False when the socket or the datagram failed. */
  bool OpenBroadcast();

  /** Takes the announcements that have arrived, while the search goes on. Any thread. */
  void Serve();

  /**
   * Ends the search, then asks every printer that has announced itself for its names. Asks once per search:
   * later calls change nothing. Given up at the next printer or answer when a stop is requested.
   */
  void Collect(const std::stop_token& given_up);

  /** The printers that Collect found, in the order of their announcements. */
  std::vector<tagFoundPrinter> FoundPrinters();

 private:
  bool MakeSocket();
  void TakeAnnouncements();
  void OnReceive();
  std::optional<tagFoundPrinter> Ask(const std::string& address, const std::stop_token& given_up);

  ISockets& sockets_;
  IClock& clock_;
  ITextCodec& codec_;
  const tagSearchNetwork network_;

  std::mutex lock_;  // for all below
  CSocket socket_;
  bool is_searching_ = false;
  bool is_collected_ = false;
  std::vector<std::string> addresses_;  // dotted, each once
  std::vector<tagFoundPrinter> found_;
};

}  // namespace tavira
