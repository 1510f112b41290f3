#pragma once

#include <cstdint>

namespace platform {

/// What the kernel tells of one TCP socket.
struct SocketRecord {
  std::uint64_t cookie = 0;  ///< Never used again for another socket.
  std::uint32_t inode = 0;   ///< 0 for a socket that no process holds, either not yet or no longer.
  std::uint32_t uid = 0;
  /// Bytes of data since the connection began. The closing mark of each end counts as one more
  /// byte, and so does the opening mark of the end that connected.
  std::uint64_t bytesReceived = 0;  ///< Without the bytes that wait to be read.
  std::uint64_t bytesSent = 0;      ///< Only the bytes that the other end has acknowledged.
  bool hasUnread = false;           ///< Whether bytes wait to be read.
};

/// Whether a list of sockets has all sockets, or may lack some.
enum class Coverage { complete, partial };

}  // namespace platform
