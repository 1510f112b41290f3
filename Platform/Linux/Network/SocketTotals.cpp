#include "Platform/Linux/Network/SocketTotals.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "Tidewell/Accounting/AccountBook.h"

namespace platform {
namespace {

constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max() / 2;
/// Far more accounts than a report lists.
constexpr std::ptrdiff_t kMostAccounts = 1024;

void add(std::uint64_t more, std::uint64_t& total) {
  total += std::min(more, kMost - total);
}

/// Adds to `total` the growth from `counted` to `now`, and sets `counted` to `now`.
void countUp(std::uint64_t now, std::uint64_t& counted, std::uint64_t& total) {
  if (now <= counted) return;
  add(now - counted, total);
  counted = now;
}

}  // namespace

bool SocketTotals::isAccount(const Total& total) {
  return total.identifier >= tidewell::AccountBook::kFirstIdentifier;
}

void SocketTotals::update(std::span<const SocketRecord> sockets,
                          std::span<const SocketOwner> owners, Coverage coverage) {
  ++updates_;
  moveToAccounts();
  counted_.follow(sockets, coverage);
  counted_.visitListed([&](std::size_t index, Counted& counted) {
    if (owners[index].pid != 0) count(sockets[index], owners[index], counted);
  });
}

void SocketTotals::countClosed(const SocketRecord& socket, const SocketOwner& owner) {
  Counted* counted = counted_.find(socket.cookie);
  if (counted && owner.pid != 0) count(socket, owner, *counted);
}

void SocketTotals::count(const SocketRecord& socket, const SocketOwner& owner, Counted& counted) {
  Total& total = totalOf(owner);
  const std::uint64_t before = total.bytesReceived + total.bytesSent;
  countUp(socket.bytesReceived, counted.bytesReceived, total.bytesReceived);
  countUp(socket.bytesSent, counted.bytesSent, total.bytesSent);
  const bool hasGrown = total.bytesReceived + total.bytesSent > before;
  if (hasGrown) total.lastGrowth = updates_;
  if (hasGrown && isAccount(total)) accounts_->noteUse(total.identifier);
}

/// Moves the bytes that were counted before a process had an account.
void SocketTotals::moveToAccounts() {
  if (!accounts_) return;
  std::vector<Total> moved;
  std::erase_if(totals_, [&](const Total& total) {
    if (isAccount(total) || !accounts_->accountOf(total.identifier)) return false;
    moved.push_back(total);
    return true;
  });
  for (const Total& total : moved) {
    Total& account = totalOf({total.identifier, total.startTime});
    add(total.bytesReceived, account.bytesReceived);
    add(total.bytesSent, account.bytesSent);
    account.lastGrowth = updates_;
    accounts_->noteUse(account.identifier);
  }
}

SocketTotals::Total& SocketTotals::totalOf(const SocketOwner& owner) {
  const auto account = accounts_ ? accounts_->accountOf(owner.pid) : std::nullopt;
  return account ? totalUnder(*account, 0) : totalUnder(owner.pid, owner.startTime);
}

SocketTotals::Total& SocketTotals::totalUnder(std::int32_t identifier, std::uint64_t startTime) {
  const auto place = std::ranges::lower_bound(totals_, identifier, {}, &Total::identifier);
  if (place == totals_.end() || place->identifier != identifier) {
    return *totals_.insert(place, {identifier, startTime});
  }
  if (place->startTime != startTime) *place = {identifier, startTime};
  return *place;
}

void SocketTotals::keepOnly(std::span<const OwnerProcess> living) {
  std::erase_if(totals_, [&](const Total& total) {
    if (isAccount(total)) return false;
    const auto place = std::ranges::lower_bound(living, total.identifier, {}, &OwnerProcess::pid);
    return place == living.end() || place->pid != total.identifier ||
           place->startTime != total.startTime;
  });
  // Beyond the limit, the accounts go first that have not grown for the longest time.
  auto accounts = std::ranges::count_if(totals_, isAccount);
  for (; accounts > kMostAccounts; --accounts) {
    const auto growth = [](const Total& total) {
      return isAccount(total) ? total.lastGrowth : std::numeric_limits<std::uint64_t>::max();
    };
    totals_.erase(std::ranges::min_element(totals_, {}, growth));
  }
}

}  // namespace platform
