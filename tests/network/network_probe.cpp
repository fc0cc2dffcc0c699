// Proves where this process's sockets are, and only then broadcasts a printer search.
//
// Usage: network_probe.exe SENTINEL_PORT TOKEN SECONDS Connects to the sentinel on 127.0.0.1, which
// must send the token and close. Then sends one search datagram to 255.255.255.255 and prints a line
// for each address that answered, sorted. Exit code 0; 1 when the sentinel is not there (nothing was
// broadcast then), 2 when a socket fails.
#include <winsock2.h>
#include <ws2tcpip.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <set>
#include <string>

namespace {

constexpr u_short kSearchPort = 3289;

sockaddr_in Address(const char* ip, u_short port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  inet_pton(AF_INET, ip, &address.sin_addr);
  return address;
}

bool ReachesSentinel(u_short port, const std::string& token) {
  const SOCKET connection = socket(AF_INET, SOCK_STREAM, 0);
  const sockaddr_in sentinel = Address("127.0.0.1", port);
  if (connect(connection, reinterpret_cast<const sockaddr*>(&sentinel), sizeof sentinel) != 0) {
    return false;
  }
  std::string received;
  char buffer[256];
  for (int count = 0; (count = recv(connection, buffer, sizeof buffer, 0)) > 0;) {
    received.append(buffer, static_cast<std::size_t>(count));
  }
  closesocket(connection);
  return received == token;
}

bool Broadcast(SOCKET searcher) {
  const BOOL on = TRUE;
  const sockaddr_in everybody = Address("255.255.255.255", kSearchPort);
  const std::string question = std::string("KORVAP") + std::string(8, '\0');
  return setsockopt(searcher, SOL_SOCKET, SO_BROADCAST, reinterpret_cast<const char*>(&on), sizeof on) == 0 &&
         sendto(searcher, question.data(), static_cast<int>(question.size()), 0,
                reinterpret_cast<const sockaddr*>(&everybody), sizeof everybody) > 0;
}

std::set<std::string> Collect(SOCKET searcher, std::chrono::duration<double> time) {
  std::set<std::string> addresses;
  const DWORD timeout_ms = 100;
  setsockopt(searcher, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&timeout_ms),
             sizeof timeout_ms);
  const auto end = std::chrono::steady_clock::now() + time;
  while (std::chrono::steady_clock::now() < end) {
    char datagram[2048];
    sockaddr_in from{};
    int size = sizeof from;
    const int count =
        recvfrom(searcher, datagram, sizeof datagram, 0, reinterpret_cast<sockaddr*>(&from), &size);
    if (count >= 6 && std::string(datagram, 6) == "KORVAp") {
      char text[INET_ADDRSTRLEN];
      addresses.insert(inet_ntop(AF_INET, &from.sin_addr, text, sizeof text));
    }
  }
  return addresses;
}

}  // namespace

int main(int argc, char** argv) {
  WSADATA data;
  if (argc != 4 || WSAStartup(MAKEWORD(2, 2), &data) != 0) {
    return 2;
  }
  if (!ReachesSentinel(static_cast<u_short>(std::atoi(argv[1])), argv[2])) {
    std::cerr << "the sentinel is not there: this is another network\n";
    return 1;
  }
  const SOCKET searcher = socket(AF_INET, SOCK_DGRAM, 0);
  if (searcher == INVALID_SOCKET || !Broadcast(searcher)) {
    std::cerr << "the broadcast failed with error " << WSAGetLastError() << '\n';
    return 2;
  }
  for (const std::string& address : Collect(searcher, std::chrono::duration<double>(std::atof(argv[3])))) {
    std::cout << address << '\n';
  }
  return 0;
}
