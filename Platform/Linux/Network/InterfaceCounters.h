#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// Counts the bytes that all network interfaces together have moved, including the loopback
/// interface.
///
/// Reads a file of the form of `/proc/net/dev`, which it keeps open. That costs a tenth of listing
/// a desktop's sockets. A question by netlink would have to wait for a lock, which a program that
/// configures an interface may hold for seconds.
class InterfaceCounters {
 public:
  explicit InterfaceCounters(const std::string& path = "/proc/net/dev");

  /// The sum of bytes received and sent, modulo 2^64; absent when it cannot be read.
  std::optional<std::uint64_t> sum();

 private:
  std::string_view readText();

  Descriptor file_;
  std::string text_;  ///< Has the size that the last reading needed.
};

}  // namespace platform
