#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "discovery/found_printer.h"
#include "discovery/search/upiqldp.h"

namespace tavira {

/**
 * Asks many printers for their names, all at the same time: one loop over their sockets, no threads.
 *
 * Takes as long as the slowest printer, and never longer than two answers may take (36 s), however many printers are
 * silent. When the system has fewer sockets than there are printers, the rest is asked as others have answered.
 */
class CAnswerCollection {
 public:
  /** Addresses in this machine's byte order; `port` is where the printers listen. */
  CAnswerCollection(const tagNetPlatform& platform, std::vector<std::uint32_t> addresses, std::uint16_t port);

  /**
   * The printers that gave both answers, in the order of their addresses. Ends within 100 ms, incomplete, once
   * `given_up` is set. Throws std::bad_alloc. Once in the object's life.
   */
  std::vector<tagFoundPrinter> Run(const std::atomic<bool>& given_up);

 private:
  /** A printer that has not given its last answer yet. */
  struct tagAsked {
    tagAsked(const tagNetPlatform& platform, std::size_t number, std::uint16_t port)
        : place(number), connection(platform), driver(connection, port) {}

    std::size_t place;         // among the addresses
    bool is_at_names = false;  // the second question
    std::uint32_t asked_at = 0;
    CSocketProc connection;
    CUPIQLDP driver;
  };

  void AskMore();
  bool Ask(tagAsked& printer, std::uint32_t command);
  void WaitForAnswers();
  bool GoesOn(tagAsked& printer);
  std::uint32_t TimeLeft(const tagAsked& printer, std::uint32_t now) const;

  const tagNetPlatform platform_;
  const std::vector<std::uint32_t> addresses_;
  const std::uint16_t port_;
  std::uint32_t began_at_ = 0;
  std::size_t next_ = 0;  // of the addresses, the first that has not been asked
  std::vector<std::unique_ptr<tagAsked>> asked_;
  std::vector<std::unique_ptr<tagFoundPrinter>> found_;  // by place
};

/** An IPv4 address as text, as in "192.0.2.7". */
std::string DottedText(std::uint32_t address);

}  // namespace tavira
