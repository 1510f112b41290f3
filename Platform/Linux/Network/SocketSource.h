#pragma once

#include <vector>

#include "Platform/Linux/Network/SocketRecord.h"

namespace platform {

/// Lists the machine's TCP sockets. One thread at a time.
class SocketSource {
 public:
  /// `errorNumber` is 0, or an errno that says why there is no list.
  struct Listing {
    int errorNumber = 0;
    Coverage coverage = Coverage::complete;
  };

  virtual ~SocketSource() = default;

  /// Replaces `sockets` with the sockets that may carry data, in any order. A socket may come
  /// twice. After an error `sockets` is empty. Returns within seconds, whatever happens.
  virtual Listing list(std::vector<SocketRecord>& sockets) = 0;
};

/// Tells of TCP sockets that have closed, with all bytes that they carried. One thread at a time.
class ClosedSockets {
 public:
  virtual ~ClosedSockets() = default;

  /// Replaces `sockets` with the sockets that have closed since the last call, as far as the kernel
  /// has announced them. Their `inode` is 0. Never waits.
  virtual void take(std::vector<SocketRecord>& sockets) = 0;
};

}  // namespace platform
