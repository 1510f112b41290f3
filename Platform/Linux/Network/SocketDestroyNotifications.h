#pragma once

#include "Platform/Linux/Network/SocketSource.h"
#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// Receives the kernel's announcements of destroyed TCP sockets, IPv4 and IPv6
/// (`SKNLGRP_INET_TCP_DESTROY` and `SKNLGRP_INET6_TCP_DESTROY`; sock_diag(7), Linux 4.8). This
/// needs no privilege and wakes nobody, because the announcements wait in the socket's buffer.
/// Those that do not fit into the buffer are lost.
///
/// When the kernel or a sandbox offers no announcements, there are none to take.
class SocketDestroyNotifications : public ClosedSockets {
 public:
  SocketDestroyNotifications();

  [[nodiscard]] bool isAvailable() const { return static_cast<bool>(socket_); }
  void take(std::vector<SocketRecord>& sockets) override;

 private:
  Descriptor socket_;
};

}  // namespace platform
