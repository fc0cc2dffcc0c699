#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "emulator/port/exchange.h"
#include "emulator/port/fault_plan.h"
#include "emulator/port/port_description.h"
#include "emulator/printer/printer.h"

namespace lxemu {

// What the calls of a port return when they are used wrongly. Faults return the codes of the fault plan.
inline constexpr std::int32_t kPortOk = 0;
inline constexpr std::int32_t kPortAlreadyOpen = -1001;  ///< Initialize on an open port; it stays open
inline constexpr std::int32_t kPortNotOpen = -1002;      ///< any other call on a closed port
inline constexpr std::int32_t kPortNullPointer =
    -1003;  ///< no description, no data, or no place for the count

/// A port with one printer behind it: what the entry points of the port library do, apart from Windows.
/// Not synchronised; one thread at a time.
class CPortEndpoint {
 public:
  static constexpr std::size_t kMaximumLogged = tagExchange::kMaximumLogged;

  /// The printer outlives the endpoint.
  CPortEndpoint(CPrinter& printer, MillisecondClock now);

  /// Opens the port. The description is the record that ReadPortDescription understands; it only leaves a
  /// trace in the LastX functions.
  std::int32_t Initialize(const void* description);
  /// Closes the port; an answer that was not read is lost.
  std::int32_t Terminate();
  /// Runs the command bytes of one whole transmission frame. Bytes without a proper frame are accepted and
  /// lost.
  std::int32_t SendData(const std::uint8_t* data, std::uint32_t size);
  /// Without a buffer: puts the bytes of the answer that wait into *size, 0 until the whole answer is ready.
  /// With a buffer of *size bytes: moves as many as fit and wait, and puts their number into *size.
  std::int32_t ReceiveData(std::uint8_t* buffer_or_null, std::uint32_t* size);
  /// Drops what waits.
  std::int32_t ClearReceiveData();

  tagFaultPlan& Faults() { return faults_; }

  /// Every send since the log was cleared. Keep it short in long runs: ClearLog.
  const std::vector<tagExchange>& Exchanges() const { return exchanges_; }
  void ClearLog() { exchanges_.clear(); }

  int OpenCount() const { return open_count_; }            ///< Initialize calls that opened the port
  int CloseCount() const { return close_count_; }          ///< Terminate calls that closed an open port
  int TerminateCount() const { return terminate_count_; }  ///< all Terminate calls
  int SendCount() const { return send_count_; }            ///< SendData calls, failed ones included
  int PollCount() const { return poll_count_; }            ///< ReceiveData calls without a buffer
  int ReadCount() const { return read_count_; }            ///< ReceiveData calls with a buffer
  int BadFrameCount() const { return bad_frame_count_; }   ///< sends without a proper frame
  bool IsOpen() const { return is_open_; }

  // Of the last Initialize that got a description.
  const tagPortDescription& LastDescription() const { return last_description_; }
  std::int32_t LastPortType() const { return last_description_.port_type; }
  std::u16string LastString(int which) const;  ///< 1 to 3
  const std::string& LastData() const { return last_description_.data; }

 private:
  void Answer(std::string answer);

  CPrinter& printer_;
  MillisecondClock now_;
  tagFaultPlan faults_;
  std::vector<tagExchange> exchanges_;
  std::string waiting_;
  std::size_t read_position_ = 0;
  std::uint64_t ready_at_ = 0;
  bool is_open_ = false;
  int open_count_ = 0;
  int close_count_ = 0;
  int terminate_count_ = 0;
  int send_count_ = 0;
  int poll_count_ = 0;
  int read_count_ = 0;
  int bad_frame_count_ = 0;
  tagPortDescription last_description_;
};

}  // namespace lxemu
