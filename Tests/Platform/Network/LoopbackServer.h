#pragma once

#include <sys/socket.h>

#include <cstdint>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// Listens on a loopback port that the system chooses. Every call blocks until it is done.
class LoopbackServer {
 public:
  /// `family` is AF_INET or AF_INET6.
  explicit LoopbackServer(int family);

  /// False when the machine has no such addresses.
  [[nodiscard]] bool isListening() const { return static_cast<bool>(listener_); }

  [[nodiscard]] const Descriptor& listener() const { return listener_; }

  /// Connects the calling process to this server. Empty on failure.
  [[nodiscard]] Descriptor connect() const;
  [[nodiscard]] Descriptor accept() const;

 private:
  Descriptor listener_;
  sockaddr_storage address_{};
  socklen_t length_ = 0;
};

/// Whether all `count` bytes were sent or received.
bool sendBytes(const Descriptor& connection, std::uint64_t count);
bool receiveBytes(const Descriptor& connection, std::uint64_t count);

}  // namespace platform
