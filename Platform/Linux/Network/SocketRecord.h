#pragma once

#include <cstdint>

namespace platform {

/// One TCP socket as the kernel tells of it.
struct SocketRecord {
  std::uint64_t cookie = 0;  ///< Never used again for another socket.
  std::uint32_t inode = 0;   ///< 0 for a socket that no process holds (not yet, or no longer).
  std::uint32_t uid = 0;
  /// Payload since the connection began; each end's closing mark counts as one more byte, and so
  /// does the opening mark of the end that connected.
  std::uint64_t bytesReceived = 0;  ///< Less those that wait to be read.
  std::uint64_t bytesSent = 0;      ///< Those that the other end has acknowledged.
  bool hasUnread = false;           ///< Whether some wait to be read.
};

/// Whether a list of sockets holds all there were or may lack some.
enum class Coverage { complete, partial };

}  // namespace platform
