#include "view/http/listener.h"

#include <cerrno>

#include <netinet/in.h>
#include <sys/socket.h>

#include "common/system_error.h"

namespace quorvex::view {

namespace {

/// The system's own limit may be lower.
constexpr int waitingConnections = 128;

Descriptor boundSocket(const sockaddr* address, socklen_t size) {
  Descriptor made(::socket(address->sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!made) return made;
  const int on = 1;
  // Connections of an earlier run that are still fading away would keep the port from us; a program
  // that listens there still does.
  ::setsockopt(made.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (address->sa_family == AF_INET6) {
    ::setsockopt(made.get(), IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on);
  }
  if (::bind(made.get(), address, size) != 0 || ::listen(made.get(), waitingConnections) != 0) {
    return Descriptor(-1);
  }
  return made;
}

Descriptor boundSocketOf4(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return boundSocket(reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

Descriptor boundSocketOf6(std::uint16_t port) {
  sockaddr_in6 address{};
  address.sin6_family = AF_INET6;
  address.sin6_port = htons(port);
  address.sin6_addr = in6addr_loopback;
  return boundSocket(reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

bool isWithoutIpv6(int error) {
  return error == EAFNOSUPPORT || error == EADDRNOTAVAIL;
}

}  // namespace

Result<Listener> Listener::open(std::uint16_t port) {
  // A port that is free for IPv4 may be taken for IPv6.
  for (int attemptsLeft = port == 0 ? 20 : 1;; --attemptsLeft) {
    std::vector<Descriptor> sockets;
    sockets.push_back(boundSocketOf4(port));
    if (!sockets.back()) return systemError(errno);
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (::getsockname(sockets.back().get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
      return systemError(errno);
    }
    const std::uint16_t bound = ntohs(address.sin_port);
    if (Descriptor second = boundSocketOf6(bound)) {
      sockets.push_back(std::move(second));
    } else if (!isWithoutIpv6(errno)) {
      if (attemptsLeft > 1) continue;
      return systemError(errno);
    }
    return Listener(bound, std::move(sockets));
  }
}

}  // namespace quorvex::view
