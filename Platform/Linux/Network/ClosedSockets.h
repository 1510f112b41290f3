#pragma once

#include <vector>

#include "Platform/Linux/Network/SocketRecord.h"

namespace platform {

/// Tells of TCP sockets that have closed, with all that they carried. One thread at a time.
class ClosedSockets {
 public:
  virtual ~ClosedSockets() = default;

  /// Replaces `sockets` with those that closed since the last call, as far as they were told; their
  /// `inode` is 0. Never waits.
  virtual void take(std::vector<SocketRecord>& sockets) = 0;
};

}  // namespace platform
