#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "Platform/Linux/Network/ClosedSockets.h"
#include "Platform/Linux/Network/InterfaceCounters.h"
#include "Platform/Linux/Network/OwnerProcesses.h"
#include "Platform/Linux/Network/SocketHolders.h"
#include "Platform/Linux/Network/SocketOwners.h"
#include "Platform/Linux/Network/SocketSource.h"
#include "Platform/Linux/Network/SocketTotals.h"
#include "Tidewell/Ports/NetworkMeter.h"

namespace platform {

/// Counts each process's network bytes by the kernel's table of TCP sockets.
///
/// A measurement reads the table on the caller's thread, about a millisecond for hundreds of
/// sockets, and is never cancelled. It has a total for each account of which a process was ever
/// seen with a socket, under the account's identifier, and one for each such living process that
/// has no account. While no interface moves a byte, the last totals are handed out again. Where the
/// table cannot be read, a measurement fails once; from then on the last totals, which are empty
/// where none were ever made, are handed out until the table can be read again. A table that was
/// read in part adds to what was known. UDP, sockets of other network namespaces and, for anyone
/// but root, other users' sockets are not seen.
class SocketMeter : public tidewell::NetworkMeter {
 public:
  /// What the meter builds on, replaceable by tests.
  struct Parts {
    std::unique_ptr<SocketSource> source;
    std::unique_ptr<SocketHolders> holders;
    std::unique_ptr<InterfaceCounters> interfaces;
    std::function<SocketOwners::Time()> now;
    std::unique_ptr<ClosedSockets> closed = nullptr;  ///< May be null, like the rest here.
    std::optional<std::uint32_t> onlyUid = {};        ///< As `SocketOwners` takes it.
    tidewell::AccountDirectory* accounts = nullptr;   ///< Outlives the meter.
  };

  /// On the machine's own tables.
  explicit SocketMeter(tidewell::AccountDirectory* accounts = nullptr);
  explicit SocketMeter(Parts parts);

  tidewell::NetworkMeasurement measure(tidewell::Cancellation& cancellation) override;

  /// What the last measurement found, received and sent bytes apart, ascending by identifier.
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
  std::optional<std::uint64_t> interfaceSum_;  ///< As of the last complete listing.
  bool hasUnread_ = false;  ///< Whether programs can go on reading while nothing arrives.
  bool hasFailed_ = false;
};

}  // namespace platform
