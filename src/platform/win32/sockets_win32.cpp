#include "platform/sockets.h"

// Ahead of windows.h, which would bring the sockets of an older version.
#include <winsock2.h>
#include <ws2tcpip.h>
// after winsock2.h
#include <mswsock.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "platform/mutex.h"

namespace tavira {
namespace {

static_assert(sizeof(SocketHandle) == sizeof(SOCKET) && kInvalidSocket == INVALID_SOCKET);
static_assert(kControlNonBlocking == static_cast<std::uint32_t>(FIONBIO) && kControlBytesWaiting == FIONREAD);

sockaddr_in ToSystem(const tagEndpoint& endpoint) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = ::htonl(endpoint.address);
  address.sin_port = ::htons(endpoint.port);
  return address;
}

tagEndpoint FromSystem(const sockaddr_in& address) {
  return {::ntohl(address.sin_addr.s_addr), ::ntohs(address.sin_port)};
}

/** Windows refuses address 0 itself; its stand-ins may take it for this machine. */
bool RefuseNobody(const tagEndpoint& endpoint) {
  if (endpoint.address == 0) {
    ::WSASetLastError(WSAEADDRNOTAVAIL);
  }
  return endpoint.address == 0;
}

int Limited(std::size_t size) {
  return static_cast<int>(std::min<std::size_t>(size, 0x7FFFFFFF));
}

class CWin32Sockets final : public ISockets {
 public:
  ~CWin32Sockets() override {
    if (started_) {
      ::WSACleanup();
    }
  }

  SocketHandle Create(std::int32_t type) override {
    Start();
    if (type < SOCK_STREAM) {  // the system would choose one
      ::WSASetLastError(WSAESOCKTNOSUPPORT);
      return kInvalidSocket;
    }
    const SOCKET socket =
        ::WSASocketW(AF_INET, type, 0, nullptr, 0, WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
    if (socket != INVALID_SOCKET && type == SOCK_DGRAM) {
      DWORD off = 0;
      DWORD size = 0;
      // A system that does not know it has nothing to turn off.
      ::WSAIoctl(socket, SIO_UDP_CONNRESET, &off, sizeof off, nullptr, 0, &size, nullptr, nullptr);
    }
    return socket;
  }

  bool Bind(SocketHandle socket, const tagEndpoint& local) override {
    const sockaddr_in address = ToSystem(local);
    return ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }

  bool Connect(SocketHandle socket, const tagEndpoint& remote) override {
    const sockaddr_in address = ToSystem(remote);
    return !RefuseNobody(remote) &&
           ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }

  std::int32_t Send(SocketHandle socket, const void* bytes, std::size_t size) override {
    return ::send(socket, static_cast<const char*>(bytes), Limited(size), 0);
  }

  std::int32_t SendTo(SocketHandle socket, const void* bytes, std::size_t size,
                      const tagEndpoint& to) override {
    if (RefuseNobody(to)) {
      return -1;
    }
    const sockaddr_in address = ToSystem(to);
    return ::sendto(socket, static_cast<const char*>(bytes), Limited(size), 0,
                    reinterpret_cast<const sockaddr*>(&address), sizeof address);
  }

  std::int32_t Receive(SocketHandle socket, void* buffer, std::size_t size) override {
    return ::recv(socket, static_cast<char*>(buffer), Limited(size), 0);
  }

  std::int32_t ReceiveFrom(SocketHandle socket, void* buffer, std::size_t size, tagEndpoint& from) override {
    sockaddr_in address{};
    int address_size = sizeof address;
    const int received = ::recvfrom(socket, static_cast<char*>(buffer), Limited(size), 0,
                                    reinterpret_cast<sockaddr*>(&address), &address_size);
    if (received >= 0) {
      from = FromSystem(address);
    }
    return received;
  }

  // Not select: that takes 64 sockets at most.
  std::int32_t Poll(std::span<tagSocketPoll> sockets, std::uint32_t wait_ms) override {
    WSAPOLLFD one{};
    std::vector<WSAPOLLFD> many(sockets.size() > 1 ? sockets.size() : 0);
    const std::span<WSAPOLLFD> waits = many.empty() ? std::span(&one, 1) : std::span(many);
    std::transform(sockets.begin(), sockets.end(), waits.begin(), [](const tagSocketPoll& poll) {
      return WSAPOLLFD{poll.socket, POLLRDNORM, 0};
    });
    const int result = ::WSAPoll(waits.data(), static_cast<ULONG>(waits.size()),
                                 static_cast<INT>(std::min<std::uint32_t>(wait_ms, 0x7FFFFFFF)));
    if (result < 0) {
      return -1;
    }
    for (std::size_t i = 0; i < waits.size(); ++i) {
      if ((waits[i].revents & POLLNVAL) != 0) {
        ::WSASetLastError(WSAENOTSOCK);
        return -1;
      }
      sockets[i].is_readable = waits[i].revents != 0;
    }
    return result;
  }

  bool SetOption(SocketHandle socket, ESocketOption option, std::uint32_t value) override {
    const int name = option == ESocketOption::kSendTimeout      ? SO_SNDTIMEO
                     : option == ESocketOption::kReceiveTimeout ? SO_RCVTIMEO
                     : option == ESocketOption::kReceiveBuffer  ? SO_RCVBUF
                                                                : SO_BROADCAST;
    const DWORD setting = option == ESocketOption::kBroadcast ? (value != 0 ? 1U : 0U) : value;
    return ::setsockopt(socket, SOL_SOCKET, name, reinterpret_cast<const char*>(&setting), sizeof setting) ==
           0;
  }

  bool Control(SocketHandle socket, std::uint32_t command, std::uint32_t& argument) override {
    u_long value = argument;
    const bool done = ::ioctlsocket(socket, static_cast<long>(command), &value) == 0;
    if (done) {
      argument = static_cast<std::uint32_t>(value);
    }
    return done;
  }

  bool Shutdown(SocketHandle socket) override { return ::shutdown(socket, SD_BOTH) == 0; }
  bool Close(SocketHandle socket) override { return ::closesocket(socket) == 0; }

  std::optional<std::uint32_t> Resolve(const std::string& host) override {
    Start();
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    // An empty name would mean this machine.
    if (host.empty() || ::getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) {
      return std::nullopt;
    }
    sockaddr_in address{};
    std::memcpy(&address, found->ai_addr, sizeof address);
    ::freeaddrinfo(found);
    return FromSystem(address).address;
  }

  std::uint32_t LastError() override { return static_cast<std::uint32_t>(::WSAGetLastError()); }

 private:
  /** When it fails, so does the call that follows, with a number that tells. */
  void Start() {
    const std::lock_guard lock(start_lock_);
    WSADATA data{};
    started_ = started_ || ::WSAStartup(MAKEWORD(2, 2), &data) == 0;
  }

  CMutex start_lock_;
  bool started_ = false;
};

}  // namespace

std::unique_ptr<ISockets> MakeSockets() {
  return std::make_unique<CWin32Sockets>();
}

}  // namespace tavira
