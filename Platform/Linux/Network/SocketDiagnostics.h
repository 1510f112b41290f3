#pragma once

#include <vector>

#include "Platform/Linux/Network/SocketSource.h"

namespace platform {

/// Asks the kernel for the TCP sockets of this network namespace. One walk of the kernel's table
/// lists IPv4 and IPv6. Needs no privilege. UDP is left out, because the kernel counts no bytes of
/// UDP sockets.
///
/// Fails when the kernel was built without such listings, or when a sandbox refuses the request.
class SocketDiagnostics : public SocketSource {
 public:
  Listing list(std::vector<SocketRecord>& sockets) override;
};

}  // namespace platform
