#include "Platform/Linux/Network/SocketOwners.h"

#include <algorithm>
#include <functional>

namespace platform {
namespace {

using namespace std::chrono_literals;

constexpr auto kRetryInterval = 30s;

}  // namespace

SocketOwners::SocketOwners(SocketHolders& holders, OwnerProcesses& processes,
                           std::optional<std::uint32_t> onlyUid)
    : holders_(holders), processes_(processes), onlyUid_(onlyUid), history_(holders) {}

std::span<const SocketOwner> SocketOwners::find(std::span<const SocketRecord> sockets,
                                                Coverage coverage, Time now) {
  known_.follow(sockets, coverage);
  collectWanted(sockets, now);
  if (dueCount_ > 0) {
    search();
    postponeMissing(now);
  }
  owners_.resize(sockets.size());
  known_.visitListed(
      [this](std::size_t index, const Known& socket) { owners_[index] = socket.owner; });
  return owners_;
}

SocketOwner SocketOwners::lastOwner(std::uint64_t cookie) {
  const Known* socket = known_.find(cookie);
  return socket ? socket->owner : SocketOwner();
}

void SocketOwners::collectWanted(std::span<const SocketRecord> sockets, Time now) {
  wanted_.clear();
  dueCount_ = 0;
  known_.visitListed([&](std::size_t index, Known& socket) {
    forgetDeadOwner(sockets[index], socket);
    if (socket.owner.pid != 0 || !mayBeFound(sockets[index])) return;
    // A socket that is not due is looked for too, because that costs nothing more during a search.
    const bool isDue = now >= socket.nextSearch;
    if (isDue) ++dueCount_;
    wanted_.push_back({sockets[index].inode, isDue, false, &socket});
  });
  std::ranges::sort(wanted_, {}, &Wanted::inode);
}

bool SocketOwners::mayBeFound(const SocketRecord& socket) const {
  return socket.inode != 0 && (!onlyUid_ || socket.uid == *onlyUid_);
}

void SocketOwners::forgetDeadOwner(const SocketRecord& record, Known& socket) const {
  // A socket that nobody holds still carries the last bytes that its owner sent.
  if (record.inode == 0) return;
  if (socket.owner.pid == 0 || processes_.isAlive(socket.owner.pid, socket.owner.startTime)) return;
  socket = {};
}

void SocketOwners::search() {
  history_.findCandidates(candidates_);
  // Most new sockets belong to a process that owns other sockets.
  searchCandidates(true);
  searchCandidates(false);
}

void SocketOwners::searchCandidates(bool owners) {
  for (const std::int32_t pid : candidates_) {
    if (dueCount_ == 0) return;
    if (processes_.contains(pid) == owners) searchProcess(pid);
  }
}

void SocketOwners::searchProcess(std::int32_t pid) {
  const auto visit = [this, pid](std::uint32_t inode) {
    assign(inode, pid);
    return dueCount_ > 0;
  };
  const auto result = holders_.visitSockets(pid, std::ref(visit));
  if (result != SocketHolders::Search::stopped) history_.wasSearched(pid);
}

void SocketOwners::assign(std::uint32_t inode, std::int32_t pid) {
  auto wanted = std::ranges::lower_bound(wanted_, inode, {}, &Wanted::inode);
  for (; wanted != wanted_.end() && wanted->inode == inode; ++wanted) {
    if (wanted->isFound) continue;
    const OwnerProcess* process = processes_.add(pid);
    if (!process) return;
    *wanted->socket = {{pid, process->startTime}, Time::min(), false};
    wanted->isFound = true;
    if (wanted->isDue) --dueCount_;
  }
}

void SocketOwners::postponeMissing(Time now) {
  for (const Wanted& wanted : wanted_) {
    if (wanted.isFound || !wanted.isDue) continue;
    // A process gets its descriptor for a socket a moment after the socket appears, so the first
    // retry comes at once.
    wanted.socket->nextSearch = wanted.socket->wasMissed ? now + kRetryInterval : now;
    wanted.socket->wasMissed = true;
  }
}

}  // namespace platform
