#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace tavira {

/** A socket of the system; never a pointer to anything. */
using SocketHandle = std::uintptr_t;
inline constexpr SocketHandle kInvalidSocket = ~SocketHandle{0};

inline constexpr std::int32_t kStreamSocket = 1;
inline constexpr std::int32_t kDatagramSocket = 2;

/** An IPv4 address (127.0.0.1 is 0x7F000001) and a port, both in the byte order of this machine. */
struct tagEndpoint {
  std::uint32_t address = 0;
  std::uint16_t port = 0;

  bool operator==(const tagEndpoint&) const = default;
};

/** A port in network byte order to this machine's, or back. */
constexpr std::uint16_t SwapPort(std::uint16_t port) {
  return std::endian::native == std::endian::big ? port : static_cast<std::uint16_t>(port << 8 | port >> 8);
}

enum class ESocketOption {
  kSendTimeout,    /**< ms */
  kReceiveTimeout, /**< ms */
  kBroadcast,      /**< not 0: datagrams may go to a broadcast address */
  kReceiveBuffer,  /**< bytes that wait at most; the system may take less */
};

/** One of the sockets that are waited for. */
struct tagSocketPoll {
  SocketHandle socket = kInvalidSocket;
  bool is_readable = false; /**< the outcome: a receive would not wait, though it may fail */
};

/** Error numbers and control commands are those of Windows on every platform. */
inline constexpr std::uint32_t kSocketErrorWouldBlock = 10035;
inline constexpr std::uint32_t kSocketErrorMessageSize = 10040;
inline constexpr std::uint32_t kSocketErrorTimedOut = 10060;
inline constexpr std::uint32_t kSocketErrorRefused = 10061;
/** Argument: not 0 makes calls return at once instead of waiting. */
inline constexpr std::uint32_t kControlNonBlocking = 0x8004667E;
/** Argument: receives the number of bytes that wait. */
inline constexpr std::uint32_t kControlBytesWaiting = 0x4004667F;

/**
 * The system's IPv4 sockets. Starts them when first needed, once; any thread may call at any time.
 *
 * Nothing throws but Resolve, and Poll for several sockets (std::bad_alloc). Whatever fails leaves its number
 * in LastError until the same thread's next call.
 */
class ISockets {
 public:
  virtual ~ISockets() = default;

  /**
   * `type` as given; a number that names no type of socket fails. kInvalidSocket on failure. A datagram socket does
   * not report that a peer has refused what it sent, where the system leaves the choice.
   */
  virtual SocketHandle Create(std::int32_t type) = 0;
  /** Address 0: any of this machine's; port 0: a free one. */
  virtual bool Bind(SocketHandle socket, const tagEndpoint& local) = 0;
  /** Waits as long as the system does. Address 0 names no peer and fails. */
  virtual bool Connect(SocketHandle socket, const tagEndpoint& remote) = 0;

  /** One send of up to `size` bytes; the number sent, −1 on failure. */
  virtual std::int32_t Send(SocketHandle socket, const void* bytes, std::size_t size) = 0;
  virtual std::int32_t SendTo(SocketHandle socket, const void* bytes, std::size_t size,
                              const tagEndpoint& to) = 0;

  /**
   * One receive; the number of bytes, 0 when the peer has ended the stream, −1 on failure. Waits up to the
   * socket's receive time-out (number 10060). A datagram larger than `size` is lost (number 10040).
   */
  virtual std::int32_t Receive(SocketHandle socket, void* buffer, std::size_t size) = 0;
  virtual std::int32_t ReceiveFrom(SocketHandle socket, void* buffer, std::size_t size,
                                   tagEndpoint& from) = 0;

  /**
   * Waits for the first of the sockets, of which there is at least one, to become readable, and marks all that are:
   * how many, 0 when none is after `wait_ms`, −1 on failure. Any number of sockets.
   */
  virtual std::int32_t Poll(std::span<tagSocketPoll> sockets, std::uint32_t wait_ms) = 0;
  /** The same for one socket. */
  std::int32_t PollReadable(SocketHandle socket, std::uint32_t wait_ms) {
    tagSocketPoll poll{socket};
    return Poll({&poll, 1}, wait_ms);
  }

  virtual bool SetOption(SocketHandle socket, ESocketOption option, std::uint32_t value) = 0;
  /** The socket's I/O control, one of the commands above. */
  virtual bool Control(SocketHandle socket, std::uint32_t command, std::uint32_t& argument) = 0;
  /** Ends both directions. */
  virtual bool Shutdown(SocketHandle socket) = 0;
  virtual bool Close(SocketHandle socket) = 0;

  /**
   * The first IPv4 address of a dotted text or host name; none when there is none. May take seconds for a
   * name.
   */
  virtual std::optional<std::uint32_t> Resolve(const std::string& host) = 0;

  virtual std::uint32_t LastError() = 0;
};

/** The sockets of the platform this program was built for. */
std::unique_ptr<ISockets> MakeSockets();

/** Owns one socket: shuts it down and closes it at the end of its life or when it gets another one. */
class CSocket {
 public:
  explicit CSocket(ISockets& sockets) : sockets_(sockets) {}
  ~CSocket() { Reset(); }
  CSocket(const CSocket&) = delete;
  CSocket& operator=(const CSocket&) = delete;

  void Reset(SocketHandle handle = kInvalidSocket) {
    const SocketHandle old = std::exchange(handle_, handle);
    if (old != kInvalidSocket) {
      sockets_.Shutdown(old);
      sockets_.Close(old);
    }
  }
  SocketHandle Release() { return std::exchange(handle_, kInvalidSocket); }
  SocketHandle Get() const { return handle_; }
  bool IsOpen() const { return handle_ != kInvalidSocket; }

 private:
  ISockets& sockets_;
  SocketHandle handle_ = kInvalidSocket;
};

}  // namespace tavira
