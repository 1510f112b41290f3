#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "Platform/Linux/Network/OwnerProcesses.h"
#include "Platform/Linux/Network/SocketOwners.h"
#include "Platform/Linux/Network/SocketRecord.h"
#include "Platform/Linux/Network/SocketTable.h"
#include "Tidewell/Accounting/AccountDirectory.h"

namespace platform {

/// Adds up what each process's sockets have carried.
///
/// A process that has an account is counted under it, together with all others of that account, so
/// that nothing changes when it ends. One that has none (yet) is counted by itself, and what it has
/// goes over to the account as soon as there is one.
///
/// Totals never go backwards: a closed socket's bytes stay counted, and bytes of a socket that goes
/// over to another process stay with the one that they were counted for. What a socket carries
/// after it was last listed is seen only if its end is told (`countClosed`), and one that opens and
/// closes between two listings is not seen. Memory is bounded by the living sockets and processes
/// and a fixed number of accounts.
class SocketTotals {
 public:
  /// Neither counter ever exceeds half of what 64 bits hold, so that their sum always fits.
  struct Total {
    std::int32_t identifier = 0;  ///< A process's or an account's.
    std::uint64_t startTime = 0;  ///< The process's; 0 for an account.
    std::uint64_t bytesReceived = 0;
    std::uint64_t bytesSent = 0;
    std::uint64_t lastGrowth = 0;  ///< The update that it last grew with.
  };

  /// Without `accounts` no process has one. They must outlive this.
  explicit SocketTotals(tidewell::AccountDirectory* accounts = nullptr) : accounts_(accounts) {}

  /// Counts what each socket carried since it was last counted for its owner. `sockets` is
  /// ascending by cookie, each once; `owners` has the owner of each. An owner of a known
  /// identifier and another start time begins at zero.
  void update(std::span<const SocketRecord> sockets, std::span<const SocketOwner> owners,
              Coverage coverage);

  /// Counts the last of what a socket carried that is closed now. Does nothing for one that was
  /// never listed.
  void countClosed(const SocketRecord& socket, const SocketOwner& owner);

  /// Forgets all processes but `living`, which is ascending by identifier. Accounts stay.
  void keepOnly(std::span<const OwnerProcess> living);

  /// Ascending by identifier; also those of processes that have carried nothing yet.
  [[nodiscard]] std::span<const Total> all() const { return totals_; }

  static bool isAccount(const Total& total);

  /// How many sockets are remembered.
  [[nodiscard]] std::size_t socketCount() const { return counted_.size(); }

 private:
  struct Counted {
    std::uint64_t bytesReceived = 0;
    std::uint64_t bytesSent = 0;
  };
  void count(const SocketRecord& socket, const SocketOwner& owner, Counted& counted);
  void moveToAccounts();
  Total& totalOf(const SocketOwner& owner);
  Total& totalUnder(std::int32_t identifier, std::uint64_t startTime);

  tidewell::AccountDirectory* accounts_;
  SocketTable<Counted> counted_;
  std::vector<Total> totals_;
  std::uint64_t updates_ = 0;
};

}  // namespace platform
