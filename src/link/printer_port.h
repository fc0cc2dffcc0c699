#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "link/transaction.h"

namespace tavira {

/**
 * The manager's one way to the printer: its port link, which is missing when it could not be allocated, and
 * the clock that all waits use. Every printer operation builds its commands with NewCommand and sends them
 * with Exchange.
 */
class CPrinterPort {
 public:
  CPrinterPort(IClock& clock, IModuleLoader& modules) : clock_(clock), modules_(modules) {}

  /** Makes and starts the port link unless there is one. 0, −3 or −5; the link stays in place after −5. */
  std::int32_t Start();

  bool HasLink() const { return link_ != nullptr; }

  /** Only when HasLink. */
  CPortLink& Link() { return *link_; }
  const CPortLink& Link() const { return *link_; }
  IClock& Clock() { return clock_; }

  /** Empties both buffers and hands out the send buffer to append commands to. Only when HasLink. */
  std::string& NewCommand();

  /** Runs the commands in the send buffer as one transaction to the chosen printer. −2 when never started. */
  std::int32_t Exchange(std::uint32_t timeout_ms = kDefaultTimeoutMs);

  /** The bytes of the last answer; empty when the printer was silent. Only when HasLink. */
  const std::string& Answer() const { return link_->ReceiveBuffer(); }

 private:
  IClock& clock_;
  IModuleLoader& modules_;
  std::unique_ptr<CPortLink> link_;
};

}  // namespace tavira
