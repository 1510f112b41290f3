#pragma once

#include <vector>

#include "Platform/Linux/Network/SocketSource.h"

namespace platform {

/// Asks the kernel for the TCP sockets of this network namespace, IPv4 and IPv6 in one walk of its
/// table. Needs no privilege. UDP is left out: the kernel counts no bytes per UDP socket.
///
/// Fails where the kernel was built without such listings or a sandbox refuses the question.
class SocketDiagnostics : public SocketSource {
 public:
  Listing list(std::vector<SocketRecord>& sockets) override;
};

}  // namespace platform
