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

/// Adds up the bytes that each process's sockets have carried.
///
/// A process with an account is counted under the account, together with all others of the account,
/// so that nothing changes when the process ends. A process without an account is counted by
/// itself. When it gets an account, its bytes go over to the account.
///
/// Totals never decrease: the bytes of a closed socket stay counted, and when a socket goes over to
/// another process, the bytes so far stay with the former one. The bytes after the last listing of
/// a socket are seen only if its end is announced (`countClosed`). A socket that opens and closes
/// between two listings is not seen. The memory is limited by the living sockets and processes, and
/// a fixed number of accounts.
class SocketTotals {
 public:
  /// Neither counter exceeds half of the range of 64 bits, so that the sum always fits.
  struct Total {
    std::int32_t identifier = 0;  ///< The identifier of a process or an account.
    std::uint64_t startTime = 0;  ///< The start time of the process; 0 for an account.
    std::uint64_t bytesReceived = 0;
    std::uint64_t bytesSent = 0;
    std::uint64_t lastGrowth = 0;  ///< The number of the update with which it last grew.
  };

  /// Without `accounts` no process has an account. `accounts` must outlive this object.
  explicit SocketTotals(tidewell::AccountDirectory* accounts = nullptr) : accounts_(accounts) {}

  /// Counts what each socket carried since it was last counted for its owner. `sockets` has
  /// ascending cookies, each once; `owners` has the owner of each. An owner with a known identifier
  /// and another start time begins at 0.
  void update(std::span<const SocketRecord> sockets, std::span<const SocketOwner> owners,
              Coverage coverage);

  /// Counts the last bytes of a socket that is closed now. Does nothing for a socket that was never
  /// listed.
  void countClosed(const SocketRecord& socket, const SocketOwner& owner);

  /// Forgets all processes except `living`, which has ascending identifiers. Accounts stay.
  void keepOnly(std::span<const OwnerProcess> living);

  /// In ascending order of the identifier. Processes whose sockets have carried nothing yet are
  /// among them.
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
