#include "Tidewell/ConservedProcesses.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Tidewell/ReaperCharges.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kPidSize = sizeof(std::int32_t);
/// The user and the system part of a reaped time, each cut to a hundredth of a second.
constexpr std::uint64_t kToleranceNanos = 20'000'000;
/// Processes are read one after the other, so an interval may be longer for one than for another.
constexpr double kHeadroom = 1.25;

/// Growth of a counter; none if it went backwards, as no counter should.
std::uint64_t growth(std::uint64_t now, std::uint64_t before) {
  return now > before ? now - before : 0;
}

std::uint64_t timeUnits(double nanos, Timebase timebase) {
  return static_cast<std::uint64_t>(nanos * static_cast<double>(timebase.denom) /
                                    static_cast<double>(timebase.numer));
}

std::uint64_t ownTimeOf(const ResourceUsage& usage) {
  return usage.userTime + usage.systemTime;
}

std::uint64_t diskOf(const ResourceUsage& usage) {
  return usage.diskBytesRead + usage.diskBytesWritten;
}

}  // namespace

ConservedProcesses::ConservedProcesses(Sources sources) : sources_(sources) {}

ConservedProcesses::~ConservedProcesses() = default;

std::span<const std::shared_ptr<const RunningApplication>> ConservedProcesses::all() {
  const auto current = sources_.applications.all();
  applications_.assign(current.begin(), current.end());
  std::ranges::stable_sort(applications_, {}, &RunningApplication::processIdentifier);
  pass();
  prepared_ = true;

  listed_.assign(applications_.begin(), applications_.end());
  for (const UsageAccounts::Account& account : accounts_.accounts()) {
    if (account.isListed && account.application) listed_.push_back(account.application);
  }
  return listed_;
}

std::shared_ptr<const RunningApplication> ConservedProcesses::withProcessIdentifier(
    std::int32_t pid) {
  return sources_.applications.withProcessIdentifier(pid);
}

int ConservedProcesses::listPids(std::span<std::int32_t> buffer) {
  if (buffer.empty() && !std::exchange(prepared_, false)) pass();
  const std::size_t count = order_.size() + accounts_.listedCount();
  if (buffer.empty()) return static_cast<int>(count * kPidSize);

  std::size_t written = std::min(buffer.size(), order_.size());
  std::copy_n(order_.begin(), written, buffer.begin());
  for (const UsageAccounts::Account& account : accounts_.accounts()) {
    if (account.isListed && written < buffer.size()) buffer[written++] = account.identifier;
  }
  return static_cast<int>(written * kPidSize);
}

bool ConservedProcesses::resourceUsage(std::int32_t pid, ResourceUsage& usage) {
  const Usage* counted = nullptr;
  if (const CountedProcess* process = find(pid)) {
    if (process->account != 0) counted = &process->counted;
  } else if (const auto* account = accounts_.find(pid)) {
    counted = &account->usage;
  }
  if (!counted) return false;
  usage = {};
  usage.userTime = counted->time;
  usage.diskBytesRead = counted->disk;
  return true;
}

int ConservedProcesses::path(std::int32_t pid, std::span<char, kPathCapacity> buffer) {
  const std::string* path = nullptr;
  if (const CountedProcess* process = find(pid)) {
    path = &process->path;
  } else if (const auto* account = accounts_.find(pid)) {
    path = &account->path;
  }
  if (!path) return sources_.table.path(pid, buffer);
  const std::size_t length = path->copy(buffer.data(), buffer.size() - 1);
  buffer[length] = '\0';
  return static_cast<int>(length);
}

std::int32_t ConservedProcesses::parent(std::int32_t pid) {
  return sources_.table.parent(pid);
}

bool ConservedProcesses::isAlive(std::int32_t pid) {
  return sources_.table.isAlive(pid);
}

Timebase ConservedProcesses::timebase() {
  return sources_.table.timebase();
}

void ConservedProcesses::pass() {
  measureInterval();
  accounts_.nextPass();
  for (const std::int32_t account : sources_.accounts.takeUsed())
    accounts_.add(account, {});
  readProcesses();
  findReapedMeanwhile();
  removeEnded();
  ReaperCharges charges(processes_, gone_,
                        {mostTime_, tolerance_, sources_.table.diskIncludesReaped()});
  charges.claim();
  updateOrphans();
  for (CountedProcess& process : processes_) {
    // What is still to be claimed of one that could not be read waits until it was.
    if (!process.unread) charges.settle(process);
  }
  // One that ended may have reaped before, on this very pass.
  for (CountedProcess& process : gone_)
    charges.settle(process);
  for (const CountedProcess& process : gone_)
    close(process);
  gone_.clear();
  if (accounts_.isCrowded()) foldAccounts();
  primed_ = true;
  cursor_ = 0;
}

void ConservedProcesses::measureInterval() {
  const Date now = sources_.clock.now();
  Seconds interval = now - std::exchange(lastPass_, now);
  // A clock that was set tells nothing; a tick is a fair guess then.
  if (interval <= Seconds::zero()) interval = 2s;
  interval = std::min<Seconds>(interval, 24h);
  const Timebase timebase = sources_.table.timebase();
  mostTime_ = timeUnits(interval.count() * 1e9 * sources_.processors * kHeadroom, timebase);
  tolerance_ = timeUnits(kToleranceNanos, timebase);
}

void ConservedProcesses::readProcesses() {
  const int needed = sources_.table.listPids({});
  order_.assign(needed < 1 ? 0 : static_cast<std::size_t>(needed) / kPidSize, 0);
  const int written = order_.empty() ? 0 : sources_.table.listPids(order_);
  order_.resize(std::min(order_.size(), static_cast<std::size_t>(std::max(written, 0)) / kPidSize));
  ascending_ = order_;
  if (!std::ranges::is_sorted(ascending_)) std::ranges::sort(ascending_);

  static const Application none;
  auto known = processes_.begin();
  auto application = applications_.begin();
  const auto endKnown = processes_.end();
  for (const std::int32_t pid : ascending_) {
    while (known != endKnown && known->pid < pid)
      miss(*known++);
    while (application != applications_.end() && (*application)->processIdentifier() < pid) {
      ++application;
    }
    // Of several with one identifier the last counts.
    const Application* owner = &none;
    while (application != applications_.end() && (*application)->processIdentifier() == pid) {
      owner = &*application++;
    }
    const bool isKnown = known != endKnown && known->pid == pid;
    readProcess(pid, isKnown ? &*known++ : nullptr, *owner);
  }
  while (known != endKnown)
    miss(*known++);
}

/// A process that is not listed has ended, or waits to be reaped where such ones are not listed.
void ConservedProcesses::miss(CountedProcess& process) {
  process.reapedSome = false;
  process.unread = true;
  process.ended = !sources_.table.isAlive(process.pid);
  if (!process.ended) order_.push_back(process.pid);
}

void ConservedProcesses::readProcess(std::int32_t pid, CountedProcess* known,
                                     const Application& application) {
  ResourceUsage usage;
  const bool readable = sources_.table.resourceUsage(pid, usage);
  if (known && readable && known->startTime == usage.startTime) {
    update(*known, usage, application);
    return;
  }
  if (known) {
    // What may no longer be read, but is there, has what it had.
    known->reapedSome = false;
    known->unread = true;
    known->ended = readable || !sources_.table.isAlive(pid);
  }
  if (readable) add(pid, usage, application);
}

void ConservedProcesses::add(std::int32_t pid, const ResourceUsage& usage,
                             const Application& application) {
  CountedProcess& process = born_.emplace_back();
  process.pid = pid;
  process.parent = sources_.table.parent(pid);
  process.startTime = usage.startTime;
  process.ownTime = ownTimeOf(usage);
  process.reapedTime = usage.reapedTime;
  process.disk = diskOf(usage);
  readName(process, usage.programVersion, application);
  if (primed_) {
    // All that it has used is new, as far as it can be.
    process.reapedSome = process.reapedTime > 0;
    process.counted.time = std::min(process.ownTime, mostTime_);
    process.reaped.grow(process.reapedTime, 0);
    growDisk(process, process.disk);
  } else {
    process.counted = {process.ownTime, process.disk};
  }
}

void ConservedProcesses::update(CountedProcess& process, const ResourceUsage& usage,
                                const Application& application) {
  const bool mayHaveChanged = usage.programVersion == 0 ||
                              usage.programVersion != process.programVersion ||
                              application != process.application;
  if (mayHaveChanged) readName(process, usage.programVersion, application);

  process.unread = false;
  const std::uint64_t ownTime = ownTimeOf(usage);
  const std::uint64_t disk = diskOf(usage);
  process.counted.time += growth(ownTime, process.ownTime);
  process.reapedSome = usage.reapedTime > process.reapedTime;
  process.reaped.grow(growth(usage.reapedTime, process.reapedTime), 0);
  growDisk(process, growth(disk, process.disk));
  // A counter that goes backwards, as none should, is not counted again.
  process.ownTime = std::max(process.ownTime, ownTime);
  process.reapedTime = std::max(process.reapedTime, usage.reapedTime);
  process.disk = std::max(process.disk, disk);
}

/// Where those of reaped children may be among the bytes, they wait to be sorted out.
void ConservedProcesses::growDisk(CountedProcess& process, std::uint64_t bytes) {
  if (sources_.table.diskIncludesReaped()) {
    process.reaped.grow(0, bytes);
  } else {
    process.counted.disk += bytes;
  }
}

/// Reads path and application. What was counted so far stays under the former name.
void ConservedProcesses::readName(CountedProcess& process, std::uint32_t version,
                                  const Application& application) {
  const int length = sources_.table.path(process.pid, path_);
  const std::string_view path(path_.data(), static_cast<std::size_t>(std::max(length, 0)));
  process.programVersion = version;
  // One that has just ended has no path any more.
  if (path.empty() && !process.path.empty()) return;
  if (path == process.path && application == process.application) return;
  process.path = path;
  process.application = application;
  const bool isNamed = !UsageAccounts::key(path, application.get()).empty();
  const std::int32_t account = isNamed ? accounts_.reserve(path, application.get()) : 0;
  if (account == process.account) return;
  if (process.counted != Usage())
    accounts_.add(process.account, std::exchange(process.counted, {}));
  process.account = account;
  sources_.accounts.assign(process.pid, account);
}

/// A child that was listed may have been reaped before its parent was read. What had been seen of
/// it is in both then, so it is taken for ended.
void ConservedProcesses::findReapedMeanwhile() {
  // With a process that ended its children may have, and theirs.
  std::vector<std::int32_t> parents;
  for (const std::vector<CountedProcess>* list : {&processes_, &born_}) {
    for (const CountedProcess& process : *list) {
      if (process.reapedSome || process.ended) parents.push_back(process.pid);
    }
  }
  while (!parents.empty()) {
    std::ranges::sort(parents);
    std::vector<std::int32_t> ended;
    for (std::vector<CountedProcess>* list : {&processes_, &born_}) {
      for (CountedProcess& process : *list) {
        if (process.ended || !std::ranges::binary_search(parents, process.parent)) continue;
        process.ended = !sources_.table.isAlive(process.pid);
        if (process.ended) ended.push_back(process.pid);
      }
    }
    for (const std::int32_t pid : ended)
      std::erase(order_, pid);
    parents = std::move(ended);
  }
}

/// Moves what ended to `gone_`, and what is new among the others.
void ConservedProcesses::removeEnded() {
  const auto isLive = [](const CountedProcess& process) { return !process.ended; };
  for (std::vector<CountedProcess>* list : {&processes_, &born_}) {
    const auto ended = std::stable_partition(list->begin(), list->end(), isLive);
    std::move(ended, list->end(), std::back_inserter(gone_));
    list->erase(ended, list->end());
  }
  std::ranges::stable_sort(gone_, {}, &CountedProcess::pid);
  if (!born_.empty()) {
    const auto known = static_cast<std::ptrdiff_t>(processes_.size());
    std::ranges::move(born_, std::back_inserter(processes_));
    born_.clear();
    std::ranges::inplace_merge(processes_, processes_.begin() + known, {}, &CountedProcess::pid);
  }
}

/// After the claims, which go by who was whose child when the ended ones still lived.
void ConservedProcesses::updateOrphans() {
  if (gone_.empty()) return;
  for (CountedProcess& process : processes_) {
    const bool isKnown = process.parent <= 0 || find(process.parent) != nullptr;
    if (!isKnown || std::ranges::binary_search(gone_, process.parent, {}, &CountedProcess::pid)) {
      process.parent = sources_.table.parent(process.pid);
    }
  }
}

void ConservedProcesses::close(const CountedProcess& process) {
  if (process.account == 0) return;
  if (process.counted != Usage()) accounts_.add(process.account, process.counted);
  // Another may have its number already.
  if (!find(process.pid)) sources_.accounts.noteEnd(process.pid);
}

void ConservedProcesses::foldAccounts() {
  TextMap<bool> live;
  for (const CountedProcess& process : processes_) {
    live.emplace(UsageAccounts::key(process.path, process.application.get()), true);
  }
  accounts_.fold(live);
}

CountedProcess* ConservedProcesses::find(std::int32_t pid) {
  // Ascending questions, each asked several times, hit the same entry or the next.
  if (cursor_ < processes_.size() && processes_[cursor_].pid < pid) ++cursor_;
  if (cursor_ >= processes_.size() || processes_[cursor_].pid != pid) {
    const auto found = std::ranges::lower_bound(processes_, pid, {}, &CountedProcess::pid);
    if (found == processes_.end() || found->pid != pid) return nullptr;
    cursor_ = static_cast<std::size_t>(found - processes_.begin());
  }
  return &processes_[cursor_];
}

}  // namespace tidewell
