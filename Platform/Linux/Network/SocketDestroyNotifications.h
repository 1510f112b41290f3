#pragma once

#include "Platform/Linux/Network/ClosedSockets.h"
#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// The kernel's announcements of destroyed TCP sockets, IPv4 and IPv6 (`SKNLGRP_INET_TCP_DESTROY`
/// and its sibling; sock_diag(7), Linux 4.8). Needs no privilege and wakes nobody: the
/// announcements wait in the socket's buffer. When more come than it holds, the rest are lost.
///
/// Tells of none where the kernel, or a sandbox, has no such announcements.
class SocketDestroyNotifications : public ClosedSockets {
 public:
  SocketDestroyNotifications();

  [[nodiscard]] bool isAvailable() const { return static_cast<bool>(socket_); }
  void take(std::vector<SocketRecord>& sockets) override;

 private:
  Descriptor socket_;
};

}  // namespace platform
