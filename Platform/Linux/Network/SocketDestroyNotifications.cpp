#include "Platform/Linux/Network/SocketDestroyNotifications.h"

#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <span>

#include "Platform/Linux/Network/SocketListReader.h"

namespace platform {
namespace {

/// Announcements answer no request.
constexpr std::uint32_t kNoSequence = 0;
constexpr std::size_t kAnnouncementBytes = 4096;
/// One call takes at most so many, however fast they come.
constexpr int kMostAtOnce = 10'000;

constexpr unsigned group(sknetlink_groups number) {
  return 1U << (static_cast<unsigned>(number) - 1);
}

Descriptor subscribed() {
  Descriptor socket(
      ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_SOCK_DIAG));
  if (!socket) return socket;
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = group(SKNLGRP_INET_TCP_DESTROY) | group(SKNLGRP_INET6_TCP_DESTROY);
  const int failed =
      bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  return failed ? Descriptor() : std::move(socket);
}

}  // namespace

SocketDestroyNotifications::SocketDestroyNotifications() : socket_(subscribed()) {}

void SocketDestroyNotifications::take(std::vector<SocketRecord>& sockets) {
  sockets.clear();
  if (!socket_) return;
  alignas(nlmsghdr) std::array<std::byte, kAnnouncementBytes> buffer;
  for (int message = 0; message < kMostAtOnce; ++message) {
    sockaddr_nl sender{};
    socklen_t senderLength = sizeof sender;
    const ssize_t count = recvfrom(socket_.get(), buffer.data(), buffer.size(), 0,
                                   reinterpret_cast<sockaddr*>(&sender), &senderLength);
    if (count < 0 && (errno == EINTR || errno == ENOBUFS)) continue;
    if (count <= 0) return;
    // Any process may send to a netlink socket, but only the kernel's messages are announcements.
    if (sender.nl_pid != 0) continue;
    SocketListReader(kNoSequence, sockets)
        .read(std::span(buffer).first(static_cast<std::size_t>(count)));
  }
}

}  // namespace platform
