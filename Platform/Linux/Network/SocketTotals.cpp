#include "Platform/Linux/Network/SocketTotals.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace platform {
namespace {

constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max() / 2;

/// Adds to `total` what `now` is beyond `counted`, and counts it.
void countUp(std::uint64_t now, std::uint64_t& counted, std::uint64_t& total) {
  if (now <= counted) return;
  total += std::min(now - counted, kMost - total);
  counted = now;
}

}  // namespace

void SocketTotals::update(std::span<const SocketRecord> sockets,
                          std::span<const SocketOwner> owners, Coverage coverage) {
  counted_.follow(sockets, coverage);
  counted_.visitListed([&](std::size_t index, Counted& counted) {
    if (owners[index].pid == 0) return;
    Total& total = totalOf(owners[index]);
    countUp(sockets[index].bytesReceived, counted.bytesReceived, total.bytesReceived);
    countUp(sockets[index].bytesSent, counted.bytesSent, total.bytesSent);
  });
}

SocketTotals::Total& SocketTotals::totalOf(const SocketOwner& owner) {
  const auto place = std::ranges::lower_bound(totals_, owner.pid, {}, &Total::pid);
  if (place == totals_.end() || place->pid != owner.pid) {
    return *totals_.insert(place, {owner.pid, owner.startTime, 0, 0});
  }
  if (place->startTime != owner.startTime) *place = {owner.pid, owner.startTime, 0, 0};
  return *place;
}

void SocketTotals::keepOnly(std::span<const OwnerProcess> living) {
  std::erase_if(totals_, [&](const Total& total) {
    const auto place = std::ranges::lower_bound(living, total.pid, {}, &OwnerProcess::pid);
    return place == living.end() || place->pid != total.pid || place->startTime != total.startTime;
  });
}

}  // namespace platform
