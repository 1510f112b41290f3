#include "Platform/Linux/Proc/ProcessActivity.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>

#include "Platform/Linux/Proc/LastRun.h"
#include "Platform/Linux/Proc/ProcStat.h"

namespace platform {
namespace {

std::uint64_t fromTicks(std::uint64_t ticks) {
  static const long ticksPerSecond = std::max(1L, ::sysconf(_SC_CLK_TCK));
  return ticks * (1'000'000'000ULL / static_cast<std::uint64_t>(ticksPerSecond));
}

/// Also where other users' processes are hidden from view.
bool isGone(std::int32_t pid) {
  return ::kill(pid, 0) != 0 && errno == ESRCH;
}

std::map<std::int32_t, ProcStat> allProcesses(ProcFileSystem& proc) {
  std::map<std::int32_t, ProcStat> all;
  for (const std::int32_t pid : proc.pids().value_or(std::vector<std::int32_t>())) {
    const auto text = proc.read(pid, "stat");
    if (auto stat = text ? parseProcStat(*text) : std::nullopt) all.emplace(pid, *stat);
  }
  return all;
}

}  // namespace

void ProcessActivity::begin(const std::set<std::int32_t>& pids) {
  pids_ = pids;
  before_ = look();
}

std::map<std::int32_t, ProcessActivity::Doing> ProcessActivity::end(tidewell::Seconds elapsed) {
  const auto after = look();
  std::map<std::int32_t, Doing> result;
  for (const std::int32_t pid : pids_)
    result.emplace(pid, compare(pid, before_.at(pid), after.at(pid), elapsed));
  return result;
}

std::map<std::int32_t, std::optional<ProcessActivity::Family>> ProcessActivity::look() {
  const std::map<std::int32_t, ProcStat> all = allProcesses(proc_);
  std::multimap<std::int32_t, std::int32_t> children;
  for (const auto& [pid, stat] : all)
    children.emplace(stat.parentPid, pid);
  std::map<std::int32_t, std::optional<Family>> result;
  for (const std::int32_t pid : pids_) {
    if (!all.contains(pid)) {
      result.emplace(pid, std::nullopt);
      continue;
    }
    Family family{{pid}};
    // A list that was read while processes came and went may have a ring in it.
    for (std::size_t index = 0; index < family.members.size() && index < all.size(); ++index) {
      const std::int32_t member = family.members[index];
      const ProcStat& stat = all.at(member);
      family.cpuNanos +=
          cpuClock_.nanoseconds(member).value_or(fromTicks(stat.userTicks + stat.systemTicks));
      family.cpuNanos += fromTicks(stat.childUserTicks + stat.childSystemTicks);
      const auto [first, last] = children.equal_range(member);
      for (auto child = first; child != last; ++child)
        family.members.push_back(child->second);
    }
    result.emplace(pid, std::move(family));
  }
  return result;
}

ProcessActivity::Doing ProcessActivity::compare(std::int32_t pid,
                                                const std::optional<Family>& before,
                                                const std::optional<Family>& after,
                                                tidewell::Seconds elapsed) {
  if (isGone(pid)) return {true, std::nullopt, false, std::nullopt};
  if (!before || !after || elapsed.count() <= 0) return {};
  Doing doing;
  const std::uint64_t used =
      after->cpuNanos > before->cpuNanos ? after->cpuNanos - before->cpuNanos : 0;
  doing.cpuPercent = static_cast<double>(used) / 1e9 / elapsed.count() * 100;
  doing.isQuiet = *before == *after;
  if (doing.isQuiet) doing.quietFor = timeSinceAnyRan(after->members);
  return doing;
}

std::optional<tidewell::Seconds> ProcessActivity::timeSinceAnyRan(
    const std::vector<std::int32_t>& members) {
  std::optional<tidewell::Seconds> shortest;
  for (const std::int32_t member : members) {
    const auto quiet = timeSinceLastRun(proc_, member);
    if (!quiet) return std::nullopt;
    if (!shortest || *quiet < *shortest) shortest = quiet;
  }
  return shortest;
}

}  // namespace platform
