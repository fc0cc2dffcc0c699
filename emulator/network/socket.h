#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace lxemu {

/// Room for what one read of a socket brings.
inline constexpr std::size_t kReceiveBuffer = 256 * 1024;

/// An IPv4 address and a port, both in the byte order of this machine.
struct tagSocketAddress {
  std::uint32_t ip = 0;
  std::uint16_t port = 0;
};

/// Dotted text to an address; none when it is anything else, a host name for example.
std::optional<std::uint32_t> ParseIpv4(std::string_view text);
std::string Ipv4Text(std::uint32_t ip);
/// "127.0.0.2:9100"
std::string AddressText(const tagSocketAddress& address);
/// Dotted text, or a host name that the system looks up in its own time; the first address of it.
std::optional<std::uint32_t> ResolveHost(const std::string& host);

/// Makes sockets usable in this process. Called by everything that makes one; the first call does the work,
/// and nothing undoes it: a library that is being unloaded may not.
bool StartSockets();

enum class SocketResult {
  kDone,         ///< and so many bytes
  kWouldBlock,   ///< nothing to be had at the moment
  kClosed,       ///< the peer sends nothing more
  kRefused,      ///< connect: the peer is there, the port is not
  kUnreachable,  ///< connect: no answer in time, or no way to the peer
  kFailed,       ///< the connection is broken
};

struct tagTransfer {
  SocketResult result = SocketResult::kFailed;
  std::size_t size = 0;  ///< bytes moved
};

/// Owns one socket. None of its calls waits, except Connect.
class CSocket {
 public:
  CSocket() = default;
  ~CSocket() { Close(); }
  CSocket(CSocket&& other) noexcept : handle_(std::exchange(other.handle_, kNone)) {}
  CSocket& operator=(CSocket&& other) noexcept;

  /// A datagram socket that may share its port with one that is bound to all addresses. Port 0: any free one.
  /// Not open when the address cannot be bound; then the problem says why.
  static CSocket BindDatagram(const tagSocketAddress& address, std::string& problem);
  /// A stream socket that takes connections.
  static CSocket Listen(const tagSocketAddress& address, std::string& problem);
  /// Waits up to timeout_ms for the connection; `connected` is open when the result is kDone.
  static SocketResult Connect(const tagSocketAddress& address, std::uint32_t timeout_ms, CSocket& connected);

  bool IsOpen() const { return handle_ != kNone; }
  void Close();
  /// A connection that waits, or a socket that is not open.
  CSocket Accept() const;
  tagTransfer Send(std::string_view bytes) const;
  tagTransfer Receive(std::span<char> buffer) const;
  /// Tells the peer that nothing more comes; receiving goes on.
  void ShutdownSend() const;

  /// False when the datagram did not leave.
  bool SendTo(std::string_view datagram, const tagSocketAddress& to) const;
  tagTransfer ReceiveFrom(std::span<char> buffer, tagSocketAddress& from) const;

  tagSocketAddress LocalAddress() const;
  std::intptr_t Handle() const { return handle_; }

 private:
  static constexpr std::intptr_t kNone = -1;
  static CSocket Make(int type, std::string& problem);
  bool Bind(const tagSocketAddress& address, std::string& problem);

  std::intptr_t handle_ = kNone;
};

/// What one socket is waited for, and what came of it. A broken connection counts as ready for what was
/// wanted: the next call tells.
struct tagSocketWait {
  const CSocket* socket = nullptr;
  bool wants_read = false;
  bool wants_write = false;
  bool is_readable = false;
  bool is_writable = false;
};

/// Waits until one of the sockets (at least one) is ready, a signal arrives, or the time is over.
void WaitForSockets(std::span<tagSocketWait> waits, std::uint32_t timeout_ms);

}  // namespace lxemu
