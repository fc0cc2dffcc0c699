#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fault_plan.h"
#include "printer.h"

namespace lxemu {

// What the calls of a port return when they are used wrongly. Faults return the codes of the fault plan.
inline constexpr std::int32_t kPortOk = 0;
inline constexpr std::int32_t kPortAlreadyOpen = -1001;  ///< Initialize on an open port; it stays open
inline constexpr std::int32_t kPortNotOpen = -1002;      ///< any other call on a closed port
inline constexpr std::int32_t kPortNullPointer =
    -1003;  ///< no description, no data, or no place for the count

/// Payload bytes of one send and of its answer, each cut after kMaximumLogged bytes.
struct tagExchange {
  std::string sent;              ///< without the frame marks; of a send without a proper frame, the raw bytes
  std::string answer;            ///< as it was made available; empty when there was none
  std::uint64_t sent_bytes = 0;  ///< full length of what was sent
  std::uint64_t answer_bytes = 0;  ///< full length of the answer
};

/// A port with one printer behind it: what the entry points of the port library do, apart from Windows.
/// Not synchronised; one thread at a time.
class CPortEndpoint {
 public:
  static constexpr std::size_t kMaximumLogged = std::size_t{1} << 20;

  /// The printer outlives the endpoint.
  CPortEndpoint(CPrinter& printer, MillisecondClock now);

  /// Opens the port. The description is the 56-byte record of the port library: port type int32 at 0, three
  /// addresses of zero-terminated UTF-16 text (null allowed) at 8, 16 and 24, data of 16 bytes at 32, bytes
  /// used in it int32 at 48. It only leaves a trace in the LastX functions.
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
  std::int32_t LastPortType() const { return last_port_type_; }
  std::u16string LastString(int which) const;  ///< 1 to 3
  const std::string& LastData() const { return last_data_; }

 private:
  bool FindFault(PortCall call, std::int32_t& code);
  void RecordDescription(const void* description);
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
  std::int32_t last_port_type_ = 0;
  std::u16string last_strings_[3];
  std::string last_data_;
};

/// The command bytes between the frame marks; a null view when either mark is missing.
std::string_view UnwrapFrame(std::string_view frame);

}  // namespace lxemu
