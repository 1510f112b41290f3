#pragma once

#include <vector>

#include "Platform/Linux/Network/SocketSource.h"

namespace platform {

/// Lists the sockets that the test sets, and counts the listings.
class FakeSocketSource : public SocketSource {
 public:
  Listing list(std::vector<SocketRecord>& listed) override {
    ++listings;
    listed = answer.errorNumber == 0 ? sockets : std::vector<SocketRecord>();
    return answer;
  }

  std::vector<SocketRecord> sockets;
  Listing answer;
  int listings = 0;
};

}  // namespace platform
