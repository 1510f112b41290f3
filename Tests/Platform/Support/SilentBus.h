#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform::testing {

/// A socket that accepts connections and never sends anything.
class SilentBus {
 public:
  SilentBus() : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    std::strncpy(name.sun_path, path().c_str(), sizeof name.sun_path - 1);
    if (::bind(socket_.get(), reinterpret_cast<sockaddr*>(&name), sizeof name) != 0 ||
        ::listen(socket_.get(), 100) != 0) {
      std::abort();
    }
  }

  [[nodiscard]] std::string address() const { return "unix:path=" + path(); }

  /// How many connections were made since the last call.
  int connectionsMade() {
    int count = 0;
    while (Descriptor connection{::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC)}) {
      connections_.push_back(std::move(connection));
      ++count;
    }
    return count;
  }

 private:
  [[nodiscard]] std::string path() const { return folder_.path() / "bus"; }

  TemporaryFolder folder_;
  Descriptor socket_;
  std::vector<Descriptor> connections_;
};

}  // namespace platform::testing
