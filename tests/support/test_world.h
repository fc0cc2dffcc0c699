#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "emulator/port/port_endpoint.h"
#include "emulator/printer/printer.h"
#include "platform/platform.h"
#include "unit/discovery/discovery_fakes.h"

namespace tavira::test {

/** A clock that only Sleep advances, so that a time-out of a minute costs nothing. */
class CVirtualClock : public IClock {
 public:
  std::uint32_t TickCount() override { return static_cast<std::uint32_t>(now_ms_); }
  void Sleep(std::uint32_t ms) override { now_ms_ += ms; }
  /** 5 April 2026, 13:07:09. */
  std::tm LocalTime() override {
    std::tm local{};
    local.tm_year = 126;
    local.tm_mon = 3;
    local.tm_mday = 5;
    local.tm_hour = 13;
    local.tm_min = 7;
    local.tm_sec = 9;
    return local;
  }

  std::uint64_t Now() const { return now_ms_; }

 private:
  std::atomic<std::uint64_t> now_ms_ = 0xFFFFF000;  // wraps in 32 bits after four seconds of every test
};

/** What the port library's calls return where EFault::kPortCall strikes. */
inline constexpr std::int32_t kInjectedPortCode = 4242;

/** The kinds of call that the module makes to the port library. */
enum class EPortCall { kInitialize, kTerminate, kSend, kPoll, kRead };

/** The kinds of call that the module makes to the host's file system. */
enum class EFileCall { kFullPath, kCreate, kOpen, kSeek, kSize, kWrite, kTruncate, kRead, kClose };

/**
 * Everything outside the module for one test: virtual time, the port library's entry points with an emulated
 * printer behind them, a machine with a registry and USB devices, and faults. One at a time; the module's platform and entry points find it by Current.
 */
class CTestWorld {
 public:
  CTestWorld();
  ~CTestWorld();
  CTestWorld(const CTestWorld&) = delete;
  CTestWorld& operator=(const CTestWorld&) = delete;
  static CTestWorld& Current();

  CVirtualClock clock;
  lxemu::CPrinter printer;
  lxemu::CPortEndpoint port;
  tagMemoryKey machine;        /**< the registry's root */
  CRecordedUsbTree usb;        /**< its devices */
  ISockets* sockets = nullptr; /**< null: the real ones; set before Initialize */
  CMemoryProfile profiles;     /**< its Setting.ini */

  bool library_is_missing = false;
  std::set<std::string> missing_symbols;
  std::vector<std::string> symbol_lookups; /**< in the order of the look-ups */

  std::vector<EPortCall> calls;           /**< every call of the module, in order */
  std::uint32_t fail_call = 0;            /**< see FailCall */
  bool call_failed = false;               /**< whether the call to fail was reached */
  std::vector<EFileCall> file_calls;      /**< likewise, of files */
  std::size_t fail_file_call = 0;         /**< fails the Nth of them since the log was cleared; 0 none */
  std::function<void()> before_file_call; /**< runs before each file call */
  bool files_end_early = false;           /**< a read gets a byte less than there is */
  std::function<void()> before_send;      /**< runs before each send */

  std::optional<std::string> scripted_answer; /**< what every read delivers instead of the printer's answer */
  std::uint32_t announced_beyond = 0;         /**< how many more bytes the poll before it promises */
  bool leaves_counts_unwritten = false;       /**< by a poll or read that succeeds */
  bool double_byte_code_page = false;         /**< see CFakeTextCodec */

  int Count(EPortCall call) const;

  /** The command bytes of every transaction since the log was cleared. */
  std::vector<std::string> Sent() const;

  void ClearLog();

  /** Gives the Nth Initialize, send, poll or read from now on the result `code` instead of its own. */
  void FailCall(std::uint32_t nth, std::int32_t code);

  /** Counts one call; true, with the code set, when it is the one to fail. */
  bool IsToFail(EPortCall call, std::int32_t& code);

  /** Logs one file call; true when it is the one to fail. */
  bool IsToFail(EFileCall call);

 private:
  std::uint32_t countable_calls_ = 0;
  std::int32_t fail_code_ = 0;
};

/** The bytes of a stored setting; what GetSettingValue hands out, or "(none)". */
std::string StoredValue(std::int32_t id);

/** UTF-16 text for a host's argument. */
inline WideString Wide(std::string_view ascii) {
  return WidenAscii(ascii);
}

/** Sets a pending update from text. */
void AppendUpdate(std::uint32_t id, std::string_view value);

}  // namespace tavira::test
