#include "platform/sockets.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <vector>

namespace tavira {
namespace {

struct tagErrorPair {
  int posix;
  std::uint32_t windows;
};

constexpr tagErrorPair kErrors[] = {
    {EINTR, 10004},
    {EBADF, 10038},
    {EACCES, 10013},
    {EPERM, 10013},
    {EFAULT, 10014},
    {EINVAL, 10022},
    {EMFILE, 10024},
    {ENFILE, 10024},
    {EAGAIN, kSocketErrorWouldBlock},
    {EINPROGRESS, 10036},
    {EALREADY, 10037},
    {ENOTSOCK, 10038},
    {EDESTADDRREQ, 10039},
    {EPROTOTYPE, 10041},
    {EMSGSIZE, kSocketErrorMessageSize},
    {ENOPROTOOPT, 10042},
    {EPROTONOSUPPORT, 10043},
    {ESOCKTNOSUPPORT, 10044},
    {EOPNOTSUPP, 10045},
    {EAFNOSUPPORT, 10047},
    {EADDRINUSE, 10048},
    {EADDRNOTAVAIL, 10049},
    {ENETDOWN, 10050},
    {ENETUNREACH, 10051},
    {ENETRESET, 10052},
    {ECONNABORTED, 10053},
    {ECONNRESET, 10054},
    {EPIPE, 10054},
    {ENOBUFS, 10055},
    {ENOMEM, 10055},
    {EISCONN, 10056},
    {ENOTCONN, 10057},
    {ETIMEDOUT, kSocketErrorTimedOut},
    {EHOSTUNREACH, 10065},
    {ECONNREFUSED, kSocketErrorRefused},
};

int Descriptor(SocketHandle socket) {
  return socket > static_cast<SocketHandle>(std::numeric_limits<int>::max()) ? -1 : static_cast<int>(socket);
}

sockaddr_in ToSystem(const tagEndpoint& endpoint) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(endpoint.address);
  address.sin_port = htons(endpoint.port);
  return address;
}

tagEndpoint FromSystem(const sockaddr_in& address) {
  return {ntohl(address.sin_addr.s_addr), ntohs(address.sin_port)};
}

/** Address 0 means this machine here, but nobody on Windows. */
bool RefuseNobody(const tagEndpoint& endpoint) {
  if (endpoint.address != 0) {
    return false;
  }
  errno = EADDRNOTAVAIL;
  return true;
}

/** Calls again what a signal has interrupted. */
template <typename Call>
auto Uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) {
    result = call();
  }
  return result;
}

/** A wait that ended without data is a time-out, unless the socket is one that never waits. */
std::int32_t TransferResult(int descriptor, ssize_t result) {
  if (result < 0 && errno == EAGAIN) {
    errno = (::fcntl(descriptor, F_GETFL) & O_NONBLOCK) != 0 ? EAGAIN : ETIMEDOUT;
  }
  return static_cast<std::int32_t>(result);
}

class CPosixSockets final : public ISockets {
 public:
  SocketHandle Create(std::int32_t type) override {
    // Larger numbers carry flags of this system, which are no types.
    if (type < SOCK_STREAM || type > SOCK_SEQPACKET) {
      errno = ESOCKTNOSUPPORT;
      return kInvalidSocket;
    }
    const int descriptor = ::socket(AF_INET, type | SOCK_CLOEXEC, 0);
    return descriptor < 0 ? kInvalidSocket : static_cast<SocketHandle>(descriptor);
  }

  bool Bind(SocketHandle socket, const tagEndpoint& local) override {
    const sockaddr_in address = ToSystem(local);
    return ::bind(Descriptor(socket), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }

  bool Connect(SocketHandle socket, const tagEndpoint& remote) override {
    if (RefuseNobody(remote)) {
      return false;
    }
    const sockaddr_in address = ToSystem(remote);
    return ::connect(Descriptor(socket), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }

  std::int32_t Send(SocketHandle socket, const void* bytes, std::size_t size) override {
    const int descriptor = Descriptor(socket);
    return TransferResult(
        descriptor, Uninterrupted([&] { return ::send(descriptor, bytes, Limited(size), MSG_NOSIGNAL); }));
  }

  std::int32_t SendTo(SocketHandle socket, const void* bytes, std::size_t size,
                      const tagEndpoint& to) override {
    if (RefuseNobody(to)) {
      return -1;
    }
    const int descriptor = Descriptor(socket);
    const sockaddr_in address = ToSystem(to);
    return TransferResult(descriptor, Uninterrupted([&] {
                            return ::sendto(descriptor, bytes, Limited(size), MSG_NOSIGNAL,
                                            reinterpret_cast<const sockaddr*>(&address), sizeof address);
                          }));
  }

  std::int32_t Receive(SocketHandle socket, void* buffer, std::size_t size) override {
    const int descriptor = Descriptor(socket);
    return TransferResult(descriptor,
                          Uninterrupted([&] { return ::recv(descriptor, buffer, Limited(size), 0); }));
  }

  std::int32_t ReceiveFrom(SocketHandle socket, void* buffer, std::size_t size, tagEndpoint& from) override {
    const int descriptor = Descriptor(socket);
    sockaddr_in address{};
    iovec part{buffer, Limited(size)};
    msghdr message{};
    message.msg_name = &address;
    message.msg_namelen = sizeof address;
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    const ssize_t received = Uninterrupted([&] { return ::recvmsg(descriptor, &message, 0); });
    if (received >= 0 && (message.msg_flags & MSG_TRUNC) != 0) {
      errno = EMSGSIZE;
      return -1;
    }
    if (received >= 0) {
      from = FromSystem(address);
    }
    return TransferResult(descriptor, received);
  }

  std::int32_t Poll(std::span<tagSocketPoll> sockets, std::uint32_t wait_ms) override {
    pollfd one{};
    std::vector<pollfd> many(sockets.size() > 1 ? sockets.size() : 0);
    const std::span<pollfd> waits = many.empty() ? std::span(&one, 1) : std::span(many);
    std::transform(sockets.begin(), sockets.end(), waits.begin(), [](const tagSocketPoll& poll) {
      return pollfd{Descriptor(poll.socket), POLLIN, 0};
    });
    const int wait_limited = static_cast<int>(std::min<std::uint32_t>(wait_ms, 0x7FFFFFFF));
    const int result = ::poll(waits.data(), waits.size(), wait_limited);
    if (result < 0) {
      return errno == EINTR ? 0 : -1;
    }
    for (std::size_t i = 0; i < waits.size(); ++i) {
      // A negative descriptor is passed over in silence.
      if (waits[i].fd < 0 || (waits[i].revents & POLLNVAL) != 0) {
        errno = EBADF;
        return -1;
      }
      sockets[i].is_readable = waits[i].revents != 0;
    }
    return result;
  }

  bool SetOption(SocketHandle socket, ESocketOption option, std::uint32_t value) override {
    if (option == ESocketOption::kBroadcast) {
      const int allowed = value != 0 ? 1 : 0;
      return ::setsockopt(Descriptor(socket), SOL_SOCKET, SO_BROADCAST, &allowed, sizeof allowed) == 0;
    }
    if (option == ESocketOption::kReceiveBuffer) {
      const int size = static_cast<int>(std::min<std::uint32_t>(value, 0x7FFFFFFF));
      return ::setsockopt(Descriptor(socket), SOL_SOCKET, SO_RCVBUF, &size, sizeof size) == 0;
    }
    timeval time{};
    time.tv_sec = static_cast<time_t>(value / 1000);
    time.tv_usec = static_cast<suseconds_t>(value % 1000 * 1000);
    const int name = option == ESocketOption::kSendTimeout ? SO_SNDTIMEO : SO_RCVTIMEO;
    return ::setsockopt(Descriptor(socket), SOL_SOCKET, name, &time, sizeof time) == 0;
  }

  bool Control(SocketHandle socket, std::uint32_t command, std::uint32_t& argument) override {
    if (command != kControlNonBlocking && command != kControlBytesWaiting) {
      errno = EINVAL;
      return false;
    }
    int value = argument != 0 ? 1 : 0;
    if (::ioctl(Descriptor(socket), command == kControlNonBlocking ? FIONBIO : FIONREAD, &value) != 0) {
      return false;
    }
    if (command == kControlBytesWaiting) {
      argument = static_cast<std::uint32_t>(value);
    }
    return true;
  }

  bool Shutdown(SocketHandle socket) override { return ::shutdown(Descriptor(socket), SHUT_RDWR) == 0; }
  bool Close(SocketHandle socket) override { return ::close(Descriptor(socket)) == 0; }

  std::optional<std::uint32_t> Resolve(const std::string& host) override {
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (host.empty() || ::getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) {
      return std::nullopt;
    }
    sockaddr_in address{};
    std::memcpy(&address, found->ai_addr, sizeof address);
    ::freeaddrinfo(found);
    return FromSystem(address).address;
  }

  std::uint32_t LastError() override {
    const int error = errno;
    const auto known = std::find_if(std::begin(kErrors), std::end(kErrors),
                                    [error](auto& pair) { return pair.posix == error; });
    return known != std::end(kErrors) ? known->windows : static_cast<std::uint32_t>(error);
  }

 private:
  /** What one call moves at most, so that its result fits. */
  static std::size_t Limited(std::size_t size) { return std::min<std::size_t>(size, 0x7FFFFFFF); }
};

}  // namespace

std::unique_ptr<ISockets> MakeSockets() {
  return std::make_unique<CPosixSockets>();
}

}  // namespace tavira
