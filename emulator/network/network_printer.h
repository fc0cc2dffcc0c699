#pragma once

#include <cstdint>
#include <deque>
#include <filesystem>
#include <list>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "emulator/memory/folder_printer.h"
#include "emulator/network/client_connection.h"
#include "emulator/network/search_answer.h"
#include "emulator/network/socket.h"
#include "emulator/port/exchange_log.h"

namespace lxemu {

struct tagNetworkPrinterOptions {
  std::uint32_t ip = 0;
  std::string name;              ///< the second name in a search
  std::filesystem::path folder;  ///< its memory
};

/// A printer with its sockets: takes commands from any number of hosts and answers searches, all on its own
/// address. Does nothing by itself: the server waits for its sockets and calls Work.
class CNetworkPrinter {
 public:
  /// The log outlives the printer.
  CNetworkPrinter(const tagNetworkPrinterOptions& options, MillisecondClock now, CExchangeLog& log);

  /// Binds the sockets; port 0: any free one. False, with the reason, when one of them cannot be bound.
  bool Open(std::uint16_t command_port, std::uint16_t search_port, std::string& problem);

  std::uint16_t CommandPort() const { return listener_.LocalAddress().port; }
  std::uint16_t SearchPort() const { return search_socket_.LocalAddress().port; }
  const tagNetworkPrinterOptions& Options() const { return options_; }

  void AddWaits(std::vector<tagSocketWait>& waits) const;
  /// When Work is due without any event.
  std::optional<std::uint64_t> DueTime() const;
  /// Handles what the waits found, and everything that is due.
  void Work(std::span<const tagSocketWait> waits);

  /// Answers a datagram that another socket received for all printers.
  void AnswerBroadcast(std::string_view datagram, const tagSocketAddress& from);

 private:
  struct tagDelayedDatagram {
    std::uint64_t due = 0;
    tagSearchAnswer answer;
    tagSocketAddress to;
  };

  void ReadIniWhenChanged();
  void ReceiveSearches(const CSocket& socket);
  void Answer(std::string_view datagram, const tagSocketAddress& from);
  void SendDueDatagrams();
  void AcceptHosts();
  tagOutcome RunRequest(std::string_view bytes);
  void Note(std::string_view text);

  tagNetworkPrinterOptions options_;
  MillisecondClock now_;
  CExchangeLog& log_;
  std::string label_;
  CFolderPrinter printer_;
  tagFaultPlan faults_;
  tagSearchIdentity identity_;
  CSocket listener_;
  CSocket search_socket_;
  CSocket other_search_socket_;  // answers from another port come from here, and what follows goes to here
  std::deque<tagDelayedDatagram> delayed_;
  std::list<CClientConnection> hosts_;  // waits and runners point to them
  std::string receive_buffer_;
};

}  // namespace lxemu
