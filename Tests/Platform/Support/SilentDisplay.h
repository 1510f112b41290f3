#pragma once

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform::testing {

/// An X display that accepts connections and never sends anything. Its socket is abstract.
class SilentDisplay {
 public:
  SilentDisplay() {
    for (number_ = 4000; number_ < 5000 && !listen(); ++number_) {
    }
  }

  /// The value of DISPLAY for it.
  [[nodiscard]] std::string name() const { return ":" + std::to_string(number_); }

  /// Waits for the next connection.
  Descriptor nextCaller() {
    pollfd incoming{socket_.get(), POLLIN, 0};
    ::poll(&incoming, 1, -1);
    return Descriptor(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
  }

  /// Whether anybody has connected so far. Keeps the connections open.
  bool wasAsked() {
    while (true) {
      Descriptor caller(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
      if (!caller) return !callers_.empty();
      callers_.push_back(std::move(caller));
    }
  }

 private:
  bool listen() {
    socket_ = Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const std::string path = "/tmp/.X11-unix/X" + std::to_string(number_);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), address.sun_path + 1);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + path.size());
    return ::bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), size) == 0 &&
           ::listen(socket_.get(), 8) == 0;
  }

  int number_ = 0;
  Descriptor socket_;
  std::vector<Descriptor> callers_;
};

}  // namespace platform::testing
