#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/wide_string.h"

namespace tavira {

/** Results of the socket layer, unsigned as they are handed around. */
inline constexpr std::uint32_t kNetDone = 0;
inline constexpr std::uint32_t kNetFailed = 65535;
inline constexpr std::uint32_t kNetNothingReceived = 0x8000FFFF;

/** Which protocol a connection speaks: the type of its socket and the printer's port go with it. */
inline constexpr std::uint32_t kSelectorHttp = 11;     /**< stream, 80 */
inline constexpr std::uint32_t kSelectorSearch = 12;   /**< datagrams, 3289 */
inline constexpr std::uint32_t kSelectorStatus = 22;   /**< datagrams, 161 */
inline constexpr std::uint32_t kSelectorTransfer = 32; /**< datagrams, 69, from a port drawn at random */
inline constexpr std::uint32_t kSelectorFile = 42;     /**< datagrams, 21 */

inline constexpr std::size_t kHostCapacity = 1040;
inline constexpr std::size_t kErrorTextCapacity = 256;

/** Whom to connect to. */
struct tagNetAddress {
  std::uint32_t kind = 0;        /**< the printer search takes 1 only */
  TvmgrChar host[kHostCapacity]; /**< dotted IPv4 address or host name, zero-terminated when shorter */
};
static_assert(sizeof(tagNetAddress) == 2084);

/**
 * A connection to a printer, whatever protocol it speaks. The order of the operations is fixed.
 *
 * Results are the three numbers above. Open and Close exclude each other; all else is for the one thread that
 * uses the connection.
 */
class INetProc {
 public:
  /**
   * Connects (streams) or addresses (datagrams); a null address fails. What was open is closed. Streams: see
   * SetUseConnectThread for how long it takes.
   */
  virtual std::uint32_t Open(const tagNetAddress* address, std::uint32_t selector) = 0;
  /** Always 0; the connection may be opened again. */
  virtual std::uint32_t Close(std::uint32_t flag) = 0;
  /** Gives up what Open needs: only Close and destruction may follow. For a connection whose Open failed. */
  virtual void Release() = 0;

  /** 65535 without a socket; so for all operations on one. */
  virtual std::uint32_t SetSendTimeout(std::uint32_t seconds) = 0;
  /** Also how long ReceiveWait waits; that is kept without a socket too, until the next Open. */
  virtual std::uint32_t SetReceiveTimeout(std::uint32_t seconds) = 0;
  virtual std::uint32_t Reserved5() = 0;
  /**
   * 0: Open connects a stream on the calling thread, 4 attempts, each as long as the system takes and a
   * second more. Else: on a thread of its own per attempt, 5 attempts of 3 s, and then until the system has
   * given up all of them.
   */
  virtual void SetUseConnectThread(std::uint32_t flag) = 0;
  virtual std::uint32_t Reserved7() = 0;

  /** The system's number of the last failed call since Open. */
  virtual std::uint32_t GetLastErrorCode() = 0;
  /** Copies the name of that call, as in "recv():"; room for 256 characters, or null. */
  virtual void GetLastErrorText(TvmgrChar* buffer) = 0;

  /**
   * One receive of up to `size` bytes; waits as long as the receive time-out. 0x8000FFFF when that is over.
   * The next Send goes to the port that the bytes came from.
   */
  virtual std::uint32_t Receive(void* buffer, std::uint32_t size, std::uint32_t* count) = 0;
  /**
   * As Receive, but does not enter it before there is something: 0x8000FFFF at once, or with the flag set
   * after the receive time-out.
   */
  virtual std::uint32_t ReceiveWait(void* buffer, std::uint32_t size, std::uint32_t* count,
                                    std::uint32_t wait) = 0;
  /** One send; `count` may be less than `size`. Nothing is sent for size 0. */
  virtual std::uint32_t Send(const void* bytes, std::uint32_t size, std::uint32_t* count) = 0;
  /** The socket's I/O control, with the numbers of Windows. */
  virtual std::uint32_t Control(std::uint32_t command, std::uint32_t* argument) = 0;
  /** In network byte order, both. */
  virtual void SetRemotePort(std::uint16_t port) = 0;
  virtual std::uint16_t GetRemotePort() = 0;

  /** Called by Close with its flag, before it closes. */
  virtual void OnClose(std::uint32_t flag) = 0;
  virtual void SetSpareFlag(std::uint32_t flag) = 0;

  virtual ~INetProc() = default;
};

}  // namespace tavira
