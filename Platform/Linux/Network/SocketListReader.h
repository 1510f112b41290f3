#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "Platform/Linux/Network/SocketRecord.h"

struct nlmsghdr;

namespace platform {

/// Reads the messages in which the kernel tells of sockets: the answers to a listing, and the
/// announcements of closed ones.
///
/// Made for one listing or announcement; appends what it finds to `sockets`, which must outlive it.
/// Messages that are cut off or of no known form are skipped and leave the coverage partial;
/// nothing outside the given bytes is read, whatever lengths they claim.
class SocketListReader {
 public:
  enum class State { more, finished, failed };

  /// `sequence` is the number of the request, 0 for announcements; answers to others are not looked
  /// at.
  SocketListReader(std::uint32_t sequence, std::vector<SocketRecord>& sockets);

  /// Reads one datagram of any number of messages. Nothing is to be read after the first state
  /// other than `more`.
  State read(std::span<const std::byte> datagram);

  /// Says that something was lost on the way.
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
