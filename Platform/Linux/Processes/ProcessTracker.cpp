#include "Platform/Linux/Processes/ProcessTracker.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <span>
#include <utility>

namespace platform {
namespace {

using namespace std::chrono_literals;

constexpr auto kScanInterval = 30s;
/// With more new identifiers than this, listing the folder is cheaper than asking for each.
constexpr std::int32_t kMostProbes = 4096;
constexpr std::size_t kLooks = 2;
/// Descriptors left to the rest of the program.
constexpr std::size_t kSpareDescriptors = 128;

using Access = TrackedProcess::Access;

/// How many processes may keep two files open each.
std::size_t descriptorBudget() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return 0;
  const std::size_t all = std::min<rlim_t>(limit.rlim_cur, 4096);
  return all > kSpareDescriptors ? (all - kSpareDescriptors) / 2 : 0;
}

}  // namespace

ProcessTracker::ProcessTracker(Sources sources)
    : sources_(std::move(sources)),
      reader_(sources_.proc, sources_.applications, sources_.text),
      clocksWork_(sources_.clock.isAvailable()) {
  reader_.setMostKeptOpen(descriptorBudget());
}

void ProcessTracker::refresh() {
  formerNewest_ = std::exchange(newest_, sources_.proc.newestPid());
  std::erase_if(processes_, [this](TrackedProcess& process) {
    if (update(process)) return false;
    reader_.forget(process);
    return true;
  });
  if (needsScan(newest_)) {
    scan();
  } else {
    probeNew();
  }
  cursor_ = 0;
}

void ProcessTracker::prepare() {
  refresh();
  prepared_ = true;
}

void ProcessTracker::refreshUnlessPrepared() {
  if (!std::exchange(prepared_, false)) refresh();
}

const TrackedProcess* ProcessTracker::find(std::int32_t pid) {
  // Ascending questions, each asked several times, hit the same entry or the next.
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
  return {1'000'000'000, static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK))};
}

std::optional<std::uint64_t> ProcessTracker::cpuTime(std::int32_t pid) {
  if (clocksWork_) return sources_.clock.nanoseconds(pid);
  const auto stat = reader_.stat(pid);
  return stat ? std::optional(stat->userTicks + stat->systemTicks) : std::nullopt;
}

/// False when the process is gone.
bool ProcessTracker::update(TrackedProcess& process) {
  if (wasGivenOutAgain(process.pid)) {
    process.cpuTime = cpuTime(process.pid).value_or(0);
    return reader_.readAll(process);
  }
  if (process.access == Access::readable) return updateReadable(process);
  // Neither a kernel thread nor another user's process has anything to tell; whether they are
  // still there shows at the next scan.
  return process.looks >= kLooks || reader_.readAll(process);
}

bool ProcessTracker::updateReadable(TrackedProcess& process) {
  // The clock comes first: what happens between the two readings shows at the next pass.
  const auto time = cpuTime(process.pid);
  if (!time) return false;
  const std::uint64_t former = std::exchange(process.cpuTime, *time);
  // Time that runs backwards is another process under the same number.
  if (*time < former || process.looks < kLooks) return reader_.readAll(process);
  if (*time > former) return reader_.readAfterRun(process);
  reader_.noteQuiet(process);
  return true;
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
  std::erase_if(processes_, [this](TrackedProcess& process) {
    return process.access == Access::refused && !reader_.readAll(process);
  });
  const std::size_t known = processes_.size();
  for (const std::int32_t pid : *pids) {
    if (!isAmongFirst(known, pid)) add(pid);
  }
  mergeNew(known);
}

void ProcessTracker::probeNew() {
  const std::size_t known = processes_.size();
  for (std::int32_t pid = *formerNewest_ + 1; pid <= *newest_; ++pid) {
    // What is known already was given out again, and `update` has read it afresh.
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
  if (reader_.readAll(process)) processes_.push_back(std::move(process));
}

/// Brings what `add` appended behind the first `known` processes into order.
void ProcessTracker::mergeNew(std::size_t known) {
  std::inplace_merge(
      processes_.begin(), processes_.begin() + static_cast<std::ptrdiff_t>(known), processes_.end(),
      [](const TrackedProcess& left, const TrackedProcess& right) { return left.pid < right.pid; });
}

}  // namespace platform
