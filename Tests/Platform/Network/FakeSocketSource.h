#pragma once

#include <vector>

#include "Platform/Linux/Network/SocketSource.h"

namespace platform {

/// Lists what the test sets, and counts how often it was asked.
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
