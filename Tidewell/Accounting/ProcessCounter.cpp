#include "Tidewell/Accounting/ProcessCounter.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tidewell {
namespace {

/// Growth of a counter; none if it went backwards, as no counter should.
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

ProcessCounter::ProcessCounter(ProcessTable& table, AccountBook& accounts,
                               AccountDirectory& directory)
    : table_(table), accounts_(accounts), directory_(directory) {}

void ProcessCounter::begin(FollowedProcess& process, const ResourceUsage& usage,
                           const Application& application) {
  process.startTime = usage.startTime;
  process.ownTime = ownTimeOf(usage);
  process.reapedTime = usage.reapedTime;
  process.disk = diskOf(usage);
  readName(process, usage.programVersion, application);
}

void ProcessCounter::beginWithAll(FollowedProcess& process, const ResourceUsage& usage,
                                  const Application& application) {
  begin(process, usage, application);
  process.counted = {process.ownTime, process.disk};
}

void ProcessCounter::beginWithMost(FollowedProcess& process, const ResourceUsage& usage,
                                   const Application& application, const Usage& most) {
  begin(process, usage, application);
  process.reapedSome = process.reapedTime > 0;
  process.counted.time = std::min(process.ownTime, most.time);
  const std::uint64_t reaped = chargedOnce(process.pid, process.reapedTime);
  if (table_.diskIncludesReaped()) {
    process.reaped.begin(reaped, process.disk);
  } else {
    process.reaped.begin(reaped, 0);
    process.counted.disk = std::min(process.disk, most.disk);
  }
}

void ProcessCounter::update(FollowedProcess& process, const ResourceUsage& usage,
                            const Application& application) {
  const bool mayHaveChanged = usage.programVersion == 0 ||
                              usage.programVersion != process.programVersion ||
                              application != process.application;
  if (mayHaveChanged) readName(process, usage.programVersion, application);

  process.unread = false;
  const std::uint64_t disk = increase(diskOf(usage), process.disk);
  // Where those of reaped children may be among the bytes, they wait to be sorted out.
  const bool isMixed = table_.diskIncludesReaped();
  process.counted += {increase(ownTimeOf(usage), process.ownTime), isMixed ? 0 : disk};
  const std::uint64_t reaped = increase(usage.reapedTime, process.reapedTime);
  process.reapedSome = reaped > 0;
  process.reaped.grow(chargedOnce(process.pid, reaped), isMixed ? disk : 0);
  // A counter that goes backwards, as none should, is not counted again.
  process.ownTime = std::max(process.ownTime, ownTimeOf(usage));
  process.reapedTime = std::max(process.reapedTime, usage.reapedTime);
  process.disk += disk;
}

/// The time that a process has been charged for its children, each once.
std::uint64_t ProcessCounter::chargedOnce(std::int32_t pid, std::uint64_t reapedTime) {
  return reapedTime > 0 && table_.isChargedTwice(pid) ? reapedTime / 2 : reapedTime;
}

/// Reads path and application. What was counted so far stays under the former name.
void ProcessCounter::readName(FollowedProcess& process, std::uint32_t version,
                              const Application& application) {
  const std::string_view path = table_.path(process.pid);
  process.programVersion = version;
  // One that has just ended has no path any more.
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

void ProcessCounter::close(const FollowedProcess& process) {
  if (process.account != 0 && process.counted != Usage()) {
    accounts_.add(process.account, process.counted);
  }
  accounts_.removeProcess(process.account);
}

}  // namespace tidewell
