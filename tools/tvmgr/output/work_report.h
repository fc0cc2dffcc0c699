#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tvmgr {

enum class EWork : std::uint32_t {
  kNone,   /**< starting, ending, or waiting for a person or for another tvmgr */
  kPrinter /**< at work with the printer: this time counts */
};

/** What the process that works with the printer tells the one that watches it, in memory that both share. */
struct tagWorkReport {
  volatile EWork work;
  volatile std::uint64_t more_ms;      /**< time on top of the time-out: much data is under way */
  volatile std::uint64_t step_ends_ms; /**< GetTickCount64 at which the running call must be over; 0: none */
  char step[256];                      /**< what runs; UTF-8, cut, read once the writer is gone */
  char printer[256];                   /**< the chosen printer, likewise */
  char choice[256]; /**< "address:192.0.2.7": how a probe is to reach it; empty: as this process */
  volatile std::uint32_t found_size; /**< bytes of `found`; 0: nothing to be told */
  char found[1U << 19];              /**< the members of the JSON result as they stand; UTF-8 */
};

/** From now on the functions below write there; before, they do nothing. */
void SetWorkReport(tagWorkReport* report);

/** For its life this process works with the printer, or does not although it did. */
class CWorkScope {
 public:
  explicit CWorkScope(EWork work);
  ~CWorkScope();
  CWorkScope(const CWorkScope&) = delete;
  CWorkScope& operator=(const CWorkScope&) = delete;

 private:
  EWork earlier_;
};

void ReportPrinter(const std::string& printer);
/** How a probe is to reach the printer, "port:USB001"; one that is too long is left out. */
void ReportChoice(const std::string& choice);
/** What is known of the work so far, a JSON object as text: the watching process tells it when it has to end the work. */
void ReportFound(const std::string& json);
/** @param longest_ms  the bound of the call that begins; 0: none, or the call is over */
void ReportStep(const std::string& what, std::uint64_t longest_ms);
/** So many bytes go out, during which a printer may not listen: a second more for each 64 KB. */
void ReportTransfer(std::uint64_t bytes);

}  // namespace tvmgr
