#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// How many bytes all network interfaces together, the loopback one included, have moved.
///
/// Reads a file of the form of `/proc/net/dev`, which it keeps open: that costs a tenth of listing
/// a desktop's sockets, and unlike the question by netlink it waits for no lock that whoever
/// configures an interface may hold for seconds.
class InterfaceCounters {
 public:
  explicit InterfaceCounters(const std::string& path = "/proc/net/dev");

  /// The sum of bytes received and sent, modulo 2^64; absent when it cannot be read.
  std::optional<std::uint64_t> sum();

 private:
  std::string_view readText();

  Descriptor file_;
  std::string text_;  ///< As long as what was last read needs.
};

}  // namespace platform
