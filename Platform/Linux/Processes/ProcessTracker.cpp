#include "Platform/Linux/Processes/ProcessTracker.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <span>
#include <utility>

namespace platform {
namespace {

using namespace std::chrono_literals;

constexpr auto kScanInterval = 30s;
/// When there are more new identifiers, listing the folder is cheaper than asking for each of them.
constexpr std::int32_t kMostProbes = 4096;
constexpr std::size_t kLooks = 2;
/// After this time a process has joined its systemd unit and has become the program that it runs.
constexpr auto kTimeToSettle = 10s;
/// In one pass so many processes without known children are asked whether they have reaped any.
constexpr std::size_t kMostSweeps = 64;
/// Descriptors that are left to the rest of the program.
constexpr std::size_t kSpareDescriptors = 128;
constexpr std::int32_t kParentOfKernelThreads = 2;

using Access = TrackedProcess::Access;
using Reading = TrackedProcess::Reading;

/// For how many processes two files each may be kept open.
std::size_t descriptorBudget() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return 0;
  const std::size_t all = std::min<rlim_t>(limit.rlim_cur, 4096);
  return all > kSpareDescriptors ? (all - kSpareDescriptors) / 2 : 0;
}

}  // namespace

ProcessTracker::ProcessTracker(Sources sources)
    : sources_(std::move(sources)),
      groups_(sources_.controlGroups),
      reader_(sources_.proc, sources_.applications, sources_.text, groups_,
              [this](std::int32_t pid) { return findKnown(pid); }),
      clocksWork_(sources_.clock.isAvailable()),
      ticksPerSecond_(sysconf(_SC_CLK_TCK)) {
  reader_.setMostKeptOpen(descriptorBudget());
}

std::uint64_t ProcessTracker::clockTicksSinceBoot() {
  timespec time{};
  clock_gettime(CLOCK_BOOTTIME, &time);
  const auto perSecond = static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK));
  return static_cast<std::uint64_t>(time.tv_sec) * perSecond;
}

void ProcessTracker::refresh() {
  formerNewest_ = std::exchange(newest_, sources_.proc.newestPid());
  readClocks();
  findNew();
  readThoseThatRan();
  cursor_ = 0;
}

void ProcessTracker::findNew() {
  const std::size_t known = processes_.size();
  if (needsScan(newest_)) {
    scan();
  } else {
    probeNew();
  }
  hadStrangers_ = countsStrangers(processes_.size() - std::min(known, processes_.size()));
}

/// Whether more identifiers were given out than the `found` new processes have. Threads get
/// identifiers as well, so this only says that a process may have come and gone.
bool ProcessTracker::countsStrangers(std::size_t found) const {
  if (!newest_ || !formerNewest_ || *newest_ < *formerNewest_) return true;
  return static_cast<std::size_t>(*newest_ - *formerNewest_) > found;
}

const TrackedProcess* ProcessTracker::find(std::int32_t pid) {
  // Callers ask in ascending order, and several times for one process. So the answer is the last
  // entry or the next.
  if (cursor_ < processes_.size() && processes_[cursor_].pid < pid) ++cursor_;
  if (cursor_ >= processes_.size() || processes_[cursor_].pid != pid) {
    const auto found = std::ranges::lower_bound(processes_, pid, {}, &TrackedProcess::pid);
    if (found == processes_.end() || found->pid != pid) return nullptr;
    cursor_ = static_cast<std::size_t>(found - processes_.begin());
  }
  return &processes_[cursor_];
}

std::optional<TrackedProcess> ProcessTracker::readNow(std::int32_t pid) {
  TrackedProcess process(pid);
  if (!reader_.readAll(process)) return std::nullopt;
  return process;
}

tidewell::Timebase ProcessTracker::timebase() const {
  if (clocksWork_) return {1, 1};
  return {1'000'000'000, static_cast<std::uint64_t>(ticksPerSecond_)};
}

std::uint64_t ProcessTracker::fromTicks(std::uint64_t ticks) const {
  return clocksWork_ ? ticks * (1'000'000'000 / static_cast<std::uint64_t>(ticksPerSecond_))
                     : ticks;
}

std::int32_t ProcessTracker::parent(std::int32_t pid) {
  TrackedProcess* process = findKnown(pid);
  if (!process || process->parentPid == 0) return 0;
  const TrackedProcess* parent = findKnown(process->parentPid);
  if (!parent || parent->startTicks > process->startTicks) {
    const auto stat = reader_.stat(pid);
    if (!stat || stat->startTicks != process->startTicks) return 0;
    process->parentPid = stat->parentPid;
    if (TrackedProcess* heir = findKnown(stat->parentPid)) ProcessReader::noteChildren(*heir);
  }
  return process->parentPid;
}

std::int32_t ProcessTracker::readGroup(std::int32_t pid) {
  TrackedProcess* process = findKnown(pid);
  if (!process) return 0;
  reader_.readGroup(*process);
  return process->group;
}

std::optional<std::uint64_t> ProcessTracker::groupTime(std::int32_t group) {
  if (!clocksWork_) return std::nullopt;
  const auto microseconds = groups_.microseconds(group);
  return microseconds ? std::optional(*microseconds * 1000) : std::nullopt;
}

bool ProcessTracker::hasOnlyKnownMembers(std::int32_t group) {
  const auto members = groups_.members(group);
  if (!members) return false;
  const auto known = std::ranges::count_if(
      *members, [this, group](std::int32_t pid) { return isKnownMember(pid, group); });
  return static_cast<std::size_t>(known) == members->size();
}

/// The time of a group is also that of the processes that are hidden from us, in other process
/// namespaces (they have no number here) and of the kernel's threads, as those that carry the
/// network of a virtual machine.
bool ProcessTracker::isKnownMember(std::int32_t pid, std::int32_t group) {
  TrackedProcess* process = findKnown(pid);
  if (!process) return pid > 0 && (!isAlive(pid) || mayBeRead(pid));
  if (!mayBeRead(*process)) return false;
  if (process->group == group || process->access == Access::withoutProgram) return true;
  reader_.readGroup(*process);
  return false;
}

/// Whether a process that the last pass did not find is one that the next will find.
bool ProcessTracker::mayBeRead(std::int32_t pid) {
  const auto process = readNow(pid);
  return process && mayBeRead(*process);
}

/// Some kernels list a process that has ended, and whose program nobody knows.
bool ProcessTracker::mayBeRead(const TrackedProcess& process) {
  if (process.access != Access::withoutProgram) return process.access == Access::readable;
  return process.parentPid != kParentOfKernelThreads;
}

/// A group of a process that is found meanwhile is numbered anew.
void ProcessTracker::forgetUnusedGroups() {
  std::vector<std::int32_t> used;
  for (const TrackedProcess& process : processes_)
    used.push_back(process.group);
  std::ranges::sort(used);
  groups_.keepOnly(
      [&used](std::int32_t number) { return std::ranges::binary_search(used, number); });
}

bool ProcessTracker::isAlive(std::int32_t pid) {
  return cpuTime(pid).has_value();
}

std::optional<std::uint64_t> ProcessTracker::cpuTime(std::int32_t pid) {
  if (clocksWork_) return sources_.clock.nanoseconds(pid);
  const auto stat = reader_.stat(pid);
  return stat ? std::optional(stat->userTicks + stat->systemTicks) : std::nullopt;
}

void ProcessTracker::readClocks() {
  std::erase_if(processes_, [this](TrackedProcess& process) {
    if (readClock(process)) return false;
    reader_.forget(process);
    return true;
  });
}

/// False when the process is gone.
bool ProcessTracker::readClock(TrackedProcess& process) {
  process.due = Reading::none;
  const bool isAnother = wasGivenOutAgain(process.pid);
  if (process.access != Access::readable && !isAnother) {
    // A kernel thread or another user's process has nothing to tell. The next scan shows whether it
    // still exists.
    if (process.looks < kLooks) process.due = Reading::all;
    return true;
  }
  // The clock is read before the files. What happens between the two readings shows in the next
  // pass.
  const auto time = cpuTime(process.pid);
  if (!time) return false;
  const std::uint64_t former = std::exchange(process.cpuTime, *time);
  // When the time became less, the number belongs to another process now.
  if (isAnother || *time < former) process.looks = 0;
  if (process.looks < kLooks) {
    process.due = Reading::all;
  } else if (*time > former) {
    process.due = Reading::afterRun;
  } else {
    reader_.noteQuiet(process);
  }
  return true;
}

void ProcessTracker::readThoseThatRan() {
  // A process with known children is always asked what it has reaped. Others are asked only when a
  // process may have come and gone unseen.
  std::size_t sweeps = hadStrangers_ ? kMostSweeps : 0;
  std::int32_t lastSwept = 0;
  for (TrackedProcess& process : processes_) {
    // A process that cannot be read has ended since its clock was read. The next pass finds that
    // out.
    if (process.due == Reading::all && !reader_.readAll(process) && process.looks < kLooks) {
      ++process.looks;
    }
    if (process.due != Reading::afterRun) continue;
    const bool isSwept = !process.reaps && sweeps > 0 && process.pid > lastSwept_;
    if (isSwept && --sweeps == 0) lastSwept = process.pid;
    reader_.readAfterRun(process, isSwept);
  }
  lastSwept_ = lastSwept;
}

/// Whether the kernel has given `pid` to a process or thread since the last pass.
bool ProcessTracker::wasGivenOutAgain(std::int32_t pid) const {
  if (!newest_ || !formerNewest_) return false;
  const bool wrapped = *newest_ < *formerNewest_;
  return wrapped ? pid > *formerNewest_ || pid <= *newest_
                 : pid > *formerNewest_ && pid <= *newest_;
}

bool ProcessTracker::needsScan(std::optional<std::int32_t> newest) const {
  if (!clocksWork_ || !lastScan_ || !newest || !formerNewest_) return true;
  return *newest < *formerNewest_ || *newest - *formerNewest_ > kMostProbes ||
         sources_.now() - *lastScan_ >= kScanInterval;
}

void ProcessTracker::scan() {
  const auto pids = sources_.proc.pids();
  if (!pids) return;
  lastScan_ = sources_.now();
  sources_.applications.refresh();
  std::erase_if(processes_, [&](TrackedProcess& process) {
    if (std::ranges::binary_search(*pids, process.pid)) return false;
    reader_.forget(process);
    return true;
  });
  // Another user's process may have become ours meanwhile.
  for (TrackedProcess& process : processes_) {
    if (process.access == Access::refused) process.due = Reading::all;
  }
  const std::size_t known = processes_.size();
  // A vector that grows by itself doubles its size. The number of processes seldom grows much.
  if (pids->size() > processes_.capacity()) processes_.reserve(pids->size() + pids->size() / 8);
  for (const std::int32_t pid : *pids) {
    if (!isAmongFirst(known, pid)) add(pid);
  }
  mergeNew(known);
  forgetUnusedGroups();
}

void ProcessTracker::probeNew() {
  const std::size_t known = processes_.size();
  for (std::int32_t pid = *formerNewest_ + 1; pid <= *newest_; ++pid) {
    // A known identifier was given out again. `readClock` has marked its process to be read afresh.
    if (!isAmongFirst(known, pid)) add(pid);
  }
  mergeNew(known);
}

bool ProcessTracker::isAmongFirst(std::size_t count, std::int32_t pid) const {
  return std::ranges::binary_search(std::span(processes_).first(count), pid, {},
                                    &TrackedProcess::pid);
}

void ProcessTracker::add(std::int32_t pid) {
  const auto time = cpuTime(pid);
  if (!time) return;
  TrackedProcess process(pid);
  process.cpuTime = *time;
  if (!reader_.readAll(process)) return;
  if (hasSettled(process)) process.looks = kLooks;
  newParents_.push_back(process.parentPid);
  processes_.push_back(std::move(process));
}

/// Whether a second look at a process would tell the same as the first.
bool ProcessTracker::hasSettled(const TrackedProcess& process) const {
  const auto ticks = static_cast<std::uint64_t>(kTimeToSettle.count() * ticksPerSecond_);
  return process.startTicks + ticks < sources_.uptimeTicks();
}

/// Sorts the processes that `add` appended after the first `known` ones into the list.
void ProcessTracker::mergeNew(std::size_t known) {
  std::inplace_merge(
      processes_.begin(), processes_.begin() + static_cast<std::ptrdiff_t>(known), processes_.end(),
      [](const TrackedProcess& left, const TrackedProcess& right) { return left.pid < right.pid; });
  for (const std::int32_t pid : newParents_) {
    if (TrackedProcess* parent = findKnown(pid)) ProcessReader::noteChildren(*parent);
  }
  newParents_.clear();
}

TrackedProcess* ProcessTracker::findKnown(std::int32_t pid) {
  const auto found = std::ranges::lower_bound(processes_, pid, {}, &TrackedProcess::pid);
  return found == processes_.end() || found->pid != pid ? nullptr : &*found;
}

}  // namespace platform
