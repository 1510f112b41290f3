#include "Tidewell/Accounting/UsageByName.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tidewell {
namespace {

/// How much a counter has grown: nothing if it went backwards, which no counter should do.
std::uint64_t increase(std::uint64_t now, std::uint64_t before) {
  return now > before ? now - before : 0;
}

std::uint64_t ownTimeOf(const ResourceUsage& usage) {
  return usage.userTime + usage.systemTime;
}

std::uint64_t diskOf(const ResourceUsage& usage) {
  return usage.diskBytesRead + usage.diskBytesWritten;
}

}  // namespace

UsageByName::UsageByName(ProcessTable& table, AccountBook& accounts, AccountDirectory& directory)
    : table_(table), accounts_(accounts), directory_(directory) {}

void UsageByName::begin(FollowedProcess& process, const ResourceUsage& usage,
                        const Application& application) {
  process.startTime = usage.startTime;
  process.ownTime = ownTimeOf(usage);
  process.reapedTime = usage.reapedTime;
  process.disk = diskOf(usage);
  followName(process, usage.programVersion, application);
}

void UsageByName::beginWithAll(FollowedProcess& process, const ResourceUsage& usage,
                               const Application& application) {
  begin(process, usage, application);
  process.counted = {process.ownTime, process.disk};
}

void UsageByName::beginWithMost(FollowedProcess& process, const ResourceUsage& usage,
                                const Application& application, const Usage& most) {
  begin(process, usage, application);
  process.reapedSome = process.reapedTime > 0;
  process.counted.time = std::min(process.ownTime, most.time);
  process.passTime = process.counted.time;
  const std::uint64_t reaped = chargedOnce(process.pid, process.reapedTime);
  if (table_.diskIncludesReaped()) {
    process.reaped.begin(reaped, process.disk);
  } else {
    process.reaped.begin(reaped, 0);
    process.counted.disk = std::min(process.disk, most.disk);
  }
}

void UsageByName::count(FollowedProcess& process, const ResourceUsage& usage,
                        const Application& application) {
  const bool mayHaveChanged = usage.programVersion == 0 ||
                              usage.programVersion != process.programVersion ||
                              application != process.application;
  if (mayHaveChanged) followName(process, usage.programVersion, application);

  process.unread = false;
  const std::uint64_t disk = increase(diskOf(usage), process.disk);
  // If the bytes of reaped children are among them, they must be sorted out first.
  const bool isMixed = table_.diskIncludesReaped();
  process.passTime = increase(ownTimeOf(usage), process.ownTime);
  process.counted += {process.passTime, isMixed ? 0 : disk};
  const std::uint64_t reaped = increase(usage.reapedTime, process.reapedTime);
  process.reapedSome = reaped > 0;
  process.reaped.grow(chargedOnce(process.pid, reaped), isMixed ? disk : 0);
  // After a counter went backwards, only what is beyond its highest value is new.
  process.ownTime = std::max(process.ownTime, ownTimeOf(usage));
  process.reapedTime = std::max(process.reapedTime, usage.reapedTime);
  process.disk += disk;
}

/// What a process was charged for its children, counted once for each of them.
std::uint64_t UsageByName::chargedOnce(std::int32_t pid, std::uint64_t reapedTime) {
  return reapedTime > 0 && table_.isChargedTwice(pid) ? reapedTime / 2 : reapedTime;
}

/// Reads the path and the application. If they give another name, what was counted so far goes into
/// the account of the former name.
void UsageByName::followName(FollowedProcess& process, std::uint32_t version,
                             const Application& application) {
  const std::string_view path = table_.path(process.pid);
  process.programVersion = version;
  // A process that has ended has no path any more.
  if (path.empty() && !process.path.empty()) return;
  if (process.path == path && application == process.application) return;
  process.nameVersion = ++lastNameVersion_;
  process.path = paths_.share(path);
  process.application = application;
  const bool isNamed =
      process.relation != Relation::tool && !AccountBook::key(path, application.get()).empty();
  const std::int32_t account = isNamed ? accounts_.reserve(path, application.get()) : 0;
  if (account == process.account) return;
  if (process.counted != Usage())
    accounts_.add(process.account, std::exchange(process.counted, {}));
  accounts_.removeProcess(process.account);
  accounts_.addProcess(account);
  process.account = account;
  directory_.assign(process.pid, account);
}

void UsageByName::leaveInAccount(const FollowedProcess& process) {
  if (process.account != 0 && process.counted != Usage()) {
    accounts_.add(process.account, process.counted);
  }
  accounts_.removeProcess(process.account);
}

}  // namespace tidewell
