#include "Platform/Linux/Network/SocketMeter.h"

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <system_error>
#include <utility>

#include "Platform/Linux/Network/ProcSocketHolders.h"
#include "Platform/Linux/Network/SocketDestroyNotifications.h"
#include "Platform/Linux/Network/SocketDiagnostics.h"
#include "Platform/Linux/Proc/OwnRights.h"
#include "Platform/Linux/Time/BootTime.h"

namespace platform {
namespace {

SocketMeter::Parts machineParts(tidewell::AccountDirectory* accounts) {
  SocketMeter::Parts parts;
  parts.accounts = accounts;
  parts.closed = std::make_unique<SocketDestroyNotifications>();
  parts.source = std::make_unique<SocketDiagnostics>();
  parts.holders = std::make_unique<ProcSocketHolders>();
  parts.interfaces = std::make_unique<InterfaceCounters>();
  parts.now = BootTime::now;
  if (!mayReadAllProcesses()) parts.onlyUid = geteuid();
  return parts;
}

/// Sorts by cookie. Of a socket that was listed twice, one record stays, with the higher counts.
void putInOrder(std::vector<SocketRecord>& sockets) {
  std::ranges::sort(sockets, {}, &SocketRecord::cookie);
  std::size_t kept = 0;
  for (const SocketRecord& socket : sockets) {
    if (kept > 0 && sockets[kept - 1].cookie == socket.cookie) {
      SocketRecord& same = sockets[kept - 1];
      same.bytesReceived = std::max(same.bytesReceived, socket.bytesReceived);
      same.bytesSent = std::max(same.bytesSent, socket.bytesSent);
    } else {
      sockets[kept++] = socket;
    }
  }
  sockets.resize(kept);
}

}  // namespace

SocketMeter::SocketMeter(tidewell::AccountDirectory* accounts)
    : SocketMeter(machineParts(accounts)) {}

SocketMeter::SocketMeter(Parts parts)
    : parts_(std::move(parts)),
      processes_(*parts_.holders),
      owners_(*parts_.holders, processes_, parts_.onlyUid),
      totals_(parts_.accounts) {}

tidewell::NetworkMeasurement SocketMeter::measure(tidewell::Cancellation& /*cancellation*/) {
  // Closed sockets are counted first, because their owners are forgotten once a listing lacks them.
  // The kernel announces an end a while after the last byte, so they are counted even while nothing
  // moves.
  countClosed();
  const auto interfaceSum = parts_.interfaces->sum();
  if (!interfaceSum || interfaceSum != interfaceSum_ || hasUnread_) {
    const SocketSource::Listing listing = parts_.source->list(sockets_);
    if (listing.errorNumber != 0) return failed(listing.errorNumber);
    hasFailed_ = false;
    count(listing.coverage);
    interfaceSum_ = listing.coverage == Coverage::complete ? interfaceSum : std::nullopt;
  }
  return measured();
}

tidewell::NetworkMeasurement SocketMeter::failed(int errorNumber) {
  interfaceSum_.reset();
  if (!std::exchange(hasFailed_, true))
    return {std::nullopt, "cannot list sockets: " + std::generic_category().message(errorNumber)};
  // The caller logs every failure, so only the first one is reported. Later ones give the known
  // totals without those of ended processes.
  processes_.refresh();
  totals_.keepOnly(processes_.all());
  return measured();
}

tidewell::NetworkMeasurement SocketMeter::measured() const {
  tidewell::NetworkTotals totals;
  for (const SocketTotals::Total& total : totals_.all())
    totals.emplace(total.identifier, total.bytesReceived + total.bytesSent);
  return {std::move(totals), ""};
}

void SocketMeter::count(Coverage coverage) {
  putInOrder(sockets_);
  hasUnread_ = std::ranges::any_of(sockets_, &SocketRecord::hasUnread);
  processes_.refresh();
  const auto owners = owners_.find(sockets_, coverage, parts_.now());
  totals_.update(sockets_, owners, coverage);
  totals_.keepOnly(processes_.all());
}

void SocketMeter::countClosed() {
  if (!parts_.closed) return;
  parts_.closed->take(closed_);
  for (const SocketRecord& socket : closed_)
    totals_.countClosed(socket, owners_.lastOwner(socket.cookie));
  if (!closed_.empty()) totals_.keepOnly(processes_.all());
}

}  // namespace platform
