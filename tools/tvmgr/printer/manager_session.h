#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "options/options.h"
#include "output/console.h"
#include "output/work_report.h"
#include "printer/manager_library.h"
#include "printer/printer_choice.h"
#include "printer/printer_lock.h"

namespace tvmgr {

/** The module's upper bounds for its waits, in milliseconds. */
namespace limit {
constexpr std::uint64_t kTransaction = 60'100;
constexpr std::uint64_t kShortExchange = 3'100;
constexpr std::uint64_t kFullLoad = 16 * kTransaction;
constexpr std::uint64_t kUpdate = 4 * kTransaction + 10 * (500 + 10 * kTransaction);
constexpr std::uint64_t kPrefixChange = kShortExchange + 3 * kTransaction;
constexpr std::uint64_t kDirectSend = 4 * kTransaction;
/** Ten passes that refresh up to two lists each. */
constexpr std::uint64_t kConfirmFiles = 10 * (500 + 2 * kTransaction);
}  // namespace limit

/** The printer that this process has talked to, "the printer at 192.0.2.7"; empty: none. */
const std::string& AskedPrinter();

/** A text of a record (TvmgrText); empty for null. */
std::string TextOf(const wchar_t* text);

/** Tells the module which printer it is; may ask the print spooler. @return the result of TVMGR_UpdatePortComInfo */
std::int32_t TellChoice(const tagPrinterChoice& choice);

/** The printer behind the choice, as far as the module knows: the address or device path of a port. */
tagPrinterChoice KnownPrinter();

/** What a session does with the printer. */
enum class EPrinterUse {
  kNone,   /**< looks for printers: none is chosen */
  kStatus, /**< asks for its state, also while another tvmgr is at work */
  kWork    /**< anything else: one tvmgr at a time */
};

/**
 * The module, initialised and with the printer chosen; terminated at the end. Every call shows its progress.
 * A code that is not expected ends the command with its explanation.
 */
class CManagerSession {
 public:
  explicit CManagerSession(const tagGlobalOptions& options, EPrinterUse use = EPrinterUse::kWork);
  /** Works with this printer: the one that the user has agreed to, whatever is chosen meanwhile. */
  CManagerSession(const tagGlobalOptions& options, const tagPrinterChoice& choice);
  ~CManagerSession();
  CManagerSession(const CManagerSession&) = delete;
  CManagerSession& operator=(const CManagerSession&) = delete;

  /**
   * Makes one call of the module.
   *
   * @param function    its name, for --verbose
   * @param what        what it does for the user, "reading all settings"
   * @param longest_ms  the longest time it can take
   * @param now         what is going on after so many ms, for the progress; see tagProgressWords
   * @return the call's result
   */
  std::int32_t Call(const char* function, const std::string& what, std::uint64_t longest_ms,
                    const std::function<std::int32_t()>& call,
                    std::function<std::string(std::uint64_t)> now = {}) const;

  /** As Call; a result other than 0 ends the command, and so does Ctrl-C before the call. */
  void Require(const char* function, const std::string& what, std::uint64_t longest_ms,
               const std::function<std::int32_t()>& call) const;

  /** The printer's state, a value of enum TvmgrStatus. At most 3 s. */
  std::uint32_t Status() const;

  /**
   * Ends the command when the printer does not answer a question for its state: found out in 3 s, where the
   * work itself would wait a minute for each of its steps. Does nothing under --no-check.
   */
  void RequireAnsweringPrinter() const;

  /** Reads all settings and file lists. A printer that answered no setting at all ends the command. */
  void LoadAll() const;

  /** True when the printer is reached by an address, whose transfers may take longer. */
  bool IsNetwork() const;

  /** Leaves the module as it is: its end would wait for a search that nobody waits for any more. */
  void Leave() { is_left_ = true; }

  /** Waits; true as soon as Ctrl-C was pressed. */
  bool WaitOrInterrupted(std::uint32_t ms) const { return interrupt_.WaitFor(ms); }

  /** The stored bytes of a setting; none when the printer did not answer it. */
  std::optional<std::string> Value(std::int32_t id) const;

  /** The names in a file list (enum TvmgrFileList) as the last load or refresh left them, UTF-8. */
  std::vector<std::string> FileNames(std::int32_t list) const;

  /** A remark on stderr, unless --quiet. */
  void Remark(const std::string& text) const;

 private:
  CManagerSession(const tagGlobalOptions& options, EPrinterUse use, const tagPrinterChoice& choice);
  void StartModule() const;
  void ChoosePrinter(const tagPrinterChoice& choice) const;
  void RemarkOnEmptyPort(const std::string& port) const;

  const tagGlobalOptions& options_;
  CInterruptWait interrupt_;
  mutable std::uint64_t exchange_ms_ =
      0; /**< what the last question for the status took; 0: there was none */
  bool is_left_ = false;
  std::optional<CPrinterLock> lock_;
  std::optional<CWorkScope> work_;
};

}  // namespace tvmgr
