#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "emulator/network/port_record.h"
#include "emulator/network/socket.h"

namespace lxemu {

/// What a printer makes of one request.
struct tagOutcome {
  std::string answer;                     ///< empty: none
  std::uint32_t latency_ms = 0;           ///< until the answer goes out
  std::optional<std::size_t> hang_up_at;  ///< the connection ends after so many bytes of the answer
};

/// The printer's end of one host's connection. Requests are run one after the other: the next one waits until
/// the answer of the one before is out, so that a host that does not read cannot fill the memory.
class CClientConnection {
 public:
  using Runner = std::function<tagOutcome(std::string_view bytes)>;

  /// The runner lets the printer carry out the bytes of one request.
  CClientConnection(CSocket socket, Runner runner) : socket_(std::move(socket)), runner_(std::move(runner)) {}

  /// What to wait for; nothing while an answer is delayed.
  std::optional<tagSocketWait> Wait() const;
  /// When there is something to do without any event, in ms of the caller's clock.
  std::optional<std::uint64_t> DueTime() const;

  /// Receives once, into the caller's buffer first.
  void Receive(std::span<char> buffer);
  /// Sends what can be sent and runs the requests that are whole.
  void Work(std::uint64_t now);

  /// Nothing more comes of this connection.
  bool IsOver() const { return is_over_; }
  std::size_t TakeSkipped() { return requests_.TakeSkipped(); }

 private:
  struct tagDelayedAnswer {
    std::uint64_t due = 0;
    std::string bytes;
    bool hangs_up = false;
  };

  void Run(const tagRequest& request, std::uint64_t now);
  bool Flush();

  CSocket socket_;
  Runner runner_;
  CRequestStream requests_;
  std::string outgoing_;
  std::size_t sent_ = 0;
  std::optional<tagDelayedAnswer> delayed_;
  bool hangs_up_ = false;  // as soon as everything is sent
  bool is_input_over_ = false;
  bool is_over_ = false;
};

}  // namespace lxemu
