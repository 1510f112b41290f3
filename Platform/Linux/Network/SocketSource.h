#pragma once

#include <vector>

#include "Platform/Linux/Network/SocketRecord.h"

namespace platform {

/// Lists the machine's TCP sockets. One thread at a time.
class SocketSource {
 public:
  /// `errorNumber` is 0, or why no list could be had.
  struct Listing {
    int errorNumber = 0;
    Coverage coverage = Coverage::complete;
  };

  virtual ~SocketSource() = default;

  /// Replaces `sockets` with those that may carry data, in any order; one may come twice. After an
  /// error it is empty. Returns within seconds, whatever happens.
  virtual Listing list(std::vector<SocketRecord>& sockets) = 0;
};

}  // namespace platform
