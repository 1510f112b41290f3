#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "Platform/Linux/Network/SocketRecord.h"

struct nlmsghdr;

namespace platform {

/// Reads the kernel's messages about sockets: the answers to a listing request, and the
/// announcements of closed sockets.
///
/// A reader serves one listing or announcement. It appends the sockets to `sockets`, which must
/// outlive the reader. Messages that are cut off or have an unknown form are skipped, and make the
/// coverage partial. Nothing outside the given bytes is read, whatever lengths the messages claim.
class SocketListReader {
 public:
  enum class State { more, finished, failed };

  /// `sequence` is the number of the request, or 0 for announcements. Messages with another number
  /// are not looked at.
  SocketListReader(std::uint32_t sequence, std::vector<SocketRecord>& sockets);

  /// Reads one datagram, which may have any number of messages. After a state other than `more`,
  /// `read` must not be called again.
  State read(std::span<const std::byte> datagram);

  /// Notes that messages were lost before they could be read.
  void lostSome() { coverage_ = Coverage::partial; }

  [[nodiscard]] Coverage coverage() const { return coverage_; }
  /// Positive once `read` has returned `failed`.
  [[nodiscard]] int errorNumber() const { return errorNumber_; }

 private:
  State readMessage(const nlmsghdr& header, std::span<const std::byte> payload);
  State readEnd(std::span<const std::byte> payload);
  void readSocket(std::span<const std::byte> payload);

  std::uint32_t sequence_;
  std::vector<SocketRecord>& sockets_;
  Coverage coverage_ = Coverage::complete;
  int errorNumber_ = 0;
};

}  // namespace platform
