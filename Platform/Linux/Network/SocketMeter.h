#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "Platform/Linux/Network/InterfaceCounters.h"
#include "Platform/Linux/Network/OwnerProcesses.h"
#include "Platform/Linux/Network/SocketHolders.h"
#include "Platform/Linux/Network/SocketOwners.h"
#include "Platform/Linux/Network/SocketSource.h"
#include "Platform/Linux/Network/SocketTotals.h"
#include "Tidewell/Ports/NetworkMeter.h"

namespace platform {

/// Counts the network bytes of each process, from the kernel's table of TCP sockets.
///
/// A measurement reads the table on the caller's thread, which takes about a millisecond for
/// hundreds of sockets. It is never cancelled.
///
/// It has one total for each account of a process that was ever seen with a socket, under the
/// account's identifier, and one for each such living process without an account. While no
/// interface moves a byte, it hands out the last totals again.
///
/// When the table cannot be read, the first measurement fails. The following ones hand out the last
/// totals (none if there never were any) until the table can be read again. A table that was read
/// in part adds to the totals. UDP and sockets of other network namespaces are not seen; neither
/// are other users' sockets, except with the rights for it (`OwnRights`).
class SocketMeter : public tidewell::NetworkMeter {
 public:
  /// What the meter builds on, replaceable by tests.
  struct Parts {
    std::unique_ptr<SocketSource> source;
    std::unique_ptr<SocketHolders> holders;
    std::unique_ptr<InterfaceCounters> interfaces;
    std::function<SocketOwners::Time()> now;
    std::unique_ptr<ClosedSockets> closed =
        nullptr;                                ///< This and the next two may be null or absent.
    std::optional<std::uint32_t> onlyUid = {};  ///< As `SocketOwners` takes it.
    tidewell::AccountDirectory* accounts = nullptr;  ///< Outlives the meter.
  };

  /// Uses the machine's own tables.
  explicit SocketMeter(tidewell::AccountDirectory* accounts = nullptr);
  explicit SocketMeter(Parts parts);

  tidewell::NetworkMeasurement measure(tidewell::Cancellation& cancellation) override;

  /// The totals of the last measurement, with received and sent bytes apart, in ascending order of
  /// the identifier.
  [[nodiscard]] std::span<const SocketTotals::Total> totals() const { return totals_.all(); }

 private:
  tidewell::NetworkMeasurement failed(int errorNumber);
  [[nodiscard]] tidewell::NetworkMeasurement measured() const;
  void count(Coverage coverage);
  void countClosed();

  Parts parts_;
  OwnerProcesses processes_;
  SocketOwners owners_;
  SocketTotals totals_;
  std::vector<SocketRecord> sockets_;
  std::vector<SocketRecord> closed_;
  std::optional<std::uint64_t> interfaceSum_;  ///< At the last complete listing.
  bool hasUnread_ = false;  ///< Whether programs can go on reading while nothing arrives.
  bool hasFailed_ = false;
};

}  // namespace platform
