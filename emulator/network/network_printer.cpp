#include "emulator/network/network_printer.h"

#include <algorithm>
#include <utility>

namespace lxemu {
namespace {

constexpr std::size_t kMaximumHosts = 64;
// Of one socket before the others have their turn.
constexpr int kDatagramsAtATime = 64;
constexpr std::size_t kMaximumDelayed = 1024;

// Marked as locally administered; the end is that of the address, so that printers differ.
std::array<std::uint8_t, 6> MacFor(std::uint32_t ip) {
  return {0x02,
          'L',
          'X',
          static_cast<std::uint8_t>(ip >> 16),
          static_cast<std::uint8_t>(ip >> 8),
          static_cast<std::uint8_t>(ip)};
}

bool IsReadable(std::span<const tagSocketWait> waits, const CSocket& socket) {
  return std::any_of(waits.begin(), waits.end(),
                     [&](const tagSocketWait& wait) { return wait.socket == &socket && wait.is_readable; });
}

}  // namespace

CNetworkPrinter::CNetworkPrinter(const tagNetworkPrinterOptions& options, MillisecondClock now,
                                 CExchangeLog& log)
    : options_(options),
      now_(now),
      log_(log),
      label_(Ipv4Text(options.ip) + ": "),
      printer_(options.folder, std::move(now)),
      faults_(printer_.Ini().faults),
      receive_buffer_(kReceiveBuffer, '\0') {
  identity_.name = options.name;
  identity_.mac = MacFor(options.ip);
  for (const std::string& problem : printer_.Ini().problems) {
    log_.WriteProblem(label_ + "printer.ini: " + problem);
  }
}

bool CNetworkPrinter::Open(std::uint16_t command_port, std::uint16_t search_port, std::string& problem) {
  if (!printer_.FolderProblem().empty()) {
    problem = label_ + printer_.FolderProblem();
    return false;
  }
  listener_ = CSocket::Listen({options_.ip, command_port}, problem);
  search_socket_ =
      listener_.IsOpen() ? CSocket::BindDatagram({options_.ip, search_port}, problem) : CSocket();
  other_search_socket_ =
      search_socket_.IsOpen() ? CSocket::BindDatagram({options_.ip, 0}, problem) : CSocket();
  return other_search_socket_.IsOpen();
}

void CNetworkPrinter::AddWaits(std::vector<tagSocketWait>& waits) const {
  for (const CSocket* socket : {&listener_, &search_socket_, &other_search_socket_}) {
    waits.push_back({socket, true, false});
  }
  for (const CClientConnection& host : hosts_) {
    if (const std::optional<tagSocketWait> wait = host.Wait()) {
      waits.push_back(*wait);
    }
  }
}

std::optional<std::uint64_t> CNetworkPrinter::DueTime() const {
  std::optional<std::uint64_t> due;
  for (const tagDelayedDatagram& datagram : delayed_) {
    due = std::min(due.value_or(datagram.due), datagram.due);
  }
  for (const CClientConnection& host : hosts_) {
    if (const std::optional<std::uint64_t> host_due = host.DueTime()) {
      due = std::min(due.value_or(*host_due), *host_due);
    }
  }
  return due;
}

void CNetworkPrinter::Work(std::span<const tagSocketWait> waits) {
  for (const CSocket* socket : {&search_socket_, &other_search_socket_}) {
    if (IsReadable(waits, *socket)) {
      ReceiveSearches(*socket);
    }
  }
  SendDueDatagrams();
  for (CClientConnection& host : hosts_) {
    if (const std::optional<tagSocketWait> wait = host.Wait(); wait && IsReadable(waits, *wait->socket)) {
      host.Receive(receive_buffer_);
    }
    host.Work(now_());
    if (const std::size_t skipped = host.TakeSkipped(); skipped > 0) {
      Note(std::to_string(skipped) + " bytes outside any frame");
    }
  }
  hosts_.remove_if([](const CClientConnection& host) { return host.IsOver(); });
  if (IsReadable(waits, listener_)) {
    AcceptHosts();
  }
}

void CNetworkPrinter::AnswerBroadcast(std::string_view datagram, const tagSocketAddress& from) {
  if (IsSearchBroadcast(datagram)) {
    Answer(datagram, from);
  }
}

void CNetworkPrinter::ReadIniWhenChanged() {
  if (!printer_.ReadIniWhenChanged()) {
    return;
  }
  faults_ = printer_.Ini().faults;
  for (const std::string& problem : printer_.Ini().problems) {
    log_.WriteProblem(label_ + "printer.ini: " + problem);
  }
}

void CNetworkPrinter::ReceiveSearches(const CSocket& socket) {
  for (int i = 0; i < kDatagramsAtATime; ++i) {
    tagSocketAddress from;
    const tagTransfer received = socket.ReceiveFrom(receive_buffer_, from);
    if (received.result == SocketResult::kWouldBlock) {
      return;
    }
    // Anything else is the trace of an answer that found nobody.
    if (received.result == SocketResult::kDone) {
      Answer({receive_buffer_.data(), received.size}, from);
    }
  }
}

void CNetworkPrinter::Answer(std::string_view datagram, const tagSocketAddress& from) {
  ReadIniWhenChanged();
  const tagSearchPlan& plan = printer_.Ini().search;
  const std::vector<tagSearchAnswer> answers = AnswerSearch(datagram, identity_, plan);
  Note("search from " + AddressText(from) + ", " + std::to_string(datagram.size()) +
       " bytes: " + std::to_string(answers.size()) + " answers");
  for (const tagSearchAnswer& answer : answers) {
    if (delayed_.size() < kMaximumDelayed) {
      delayed_.push_back({now_() + answer.after_ms, answer, from});
    }
  }
  SendDueDatagrams();
}

void CNetworkPrinter::SendDueDatagrams() {
  const std::uint64_t now = now_();
  std::erase_if(delayed_, [&](const tagDelayedDatagram& datagram) {
    if (now < datagram.due) {
      return false;
    }
    const CSocket& socket = datagram.answer.from_other_port ? other_search_socket_ : search_socket_;
    if (!socket.SendTo(datagram.answer.bytes, datagram.to)) {
      Note("an answer to " + AddressText(datagram.to) + " did not leave");
    }
    return true;
  });
}

void CNetworkPrinter::AcceptHosts() {
  for (CSocket socket = listener_.Accept(); socket.IsOpen(); socket = listener_.Accept()) {
    if (hosts_.size() >= kMaximumHosts) {
      Note("too many connections: one more is turned away");
      continue;
    }
    ReadIniWhenChanged();
    hosts_.emplace_back(std::move(socket), [this](std::string_view bytes) { return RunRequest(bytes); });
  }
}

tagOutcome CNetworkPrinter::RunRequest(std::string_view bytes) {
  tagExchange exchange;
  tagOutcome outcome;
  outcome.answer = RunExchange(printer_.Printer(), faults_, bytes, exchange);
  outcome.latency_ms = faults_.latency_ms;
  outcome.hang_up_at = faults_.hang_up_at;
  log_.WriteExchange(exchange, label_);
  if (const std::string problem = printer_.Save(); !problem.empty()) {
    log_.WriteProblem(label_ + problem);
  }
  return outcome;
}

void CNetworkPrinter::Note(std::string_view text) {
  log_.WriteNote(label_ + std::string(text));
}

}  // namespace lxemu
