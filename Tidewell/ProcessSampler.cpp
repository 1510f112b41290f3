#include "Tidewell/ProcessSampler.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>

#include "Tidewell/CheckedArithmetic.h"

namespace tidewell {
namespace {

/// The last piece of `path` between slashes that is not empty.
std::string_view lastComponent(std::string_view path) {
  const std::size_t last = path.find_last_not_of('/');
  if (last == std::string_view::npos) return {};
  path = path.substr(0, last + 1);
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::int32_t pidOf(const std::shared_ptr<const RunningApplication>& application) {
  return application->processIdentifier();
}

}  // namespace

ProcessSampler::ProcessSampler(ProcessTable& table) : table_(table) {}

const std::vector<RawSample>& ProcessSampler::sample() {
  const ProcessSnapshot all = table_.snapshot();
  refreshGUIApps(all.applications);
  livePIDs(all.processes);
  std::size_t used = 0;
  for (const std::int32_t pid : pids_) {
    if (used == snapshot_.size()) snapshot_.emplace_back();
    if (used == programs_.size()) programs_.emplace_back();
    if (fill(pid, used)) ++used;
  }
  snapshot_.resize(used);
  programs_.resize(used);
  return snapshot_;
}

std::uint64_t ProcessSampler::nanoseconds(std::uint64_t time, Timebase timebase) {
  if (timebase.denom == 0) fatalError("the time base has no denominator");
  // The product of a large time would not fit into 64 bits, so the remainder is converted apart.
  const std::uint64_t whole = checkedMultiply(time / timebase.denom, timebase.numer);
  const std::uint64_t rest = checkedMultiply(time % timebase.denom, timebase.numer);
  return checkedAdd(whole, rest / timebase.denom);
}

std::string_view ProcessSampler::nameFromPath(std::string_view path) {
  const std::size_t bundle = path.rfind(".app/");
  if (bundle != std::string_view::npos) {
    const std::string_view name = lastComponent(path.substr(0, bundle));
    if (!name.empty()) return name;
  }
  // A path that has only slashes is the root folder, and its name is a slash.
  const std::string_view name = lastComponent(path);
  return name.empty() && !path.empty() ? path.substr(0, 1) : name;
}

void ProcessSampler::refreshGUIApps(std::span<const Application> all) {
  guiApps_.assign(all.begin(), all.end());
  if (std::ranges::is_sorted(guiApps_, {}, pidOf)) return;
  std::ranges::stable_sort(guiApps_, {}, pidOf);
}

/// The application of a process, or null. If several have the same process, the last one counts.
const RunningApplication* ProcessSampler::guiApp(std::int32_t pid) const {
  const auto end = std::ranges::upper_bound(guiApps_, pid, {}, pidOf);
  if (end == guiApps_.begin() || pidOf(*std::prev(end)) != pid) return nullptr;
  return std::prev(end)->get();
}

void ProcessSampler::livePIDs(std::span<const std::int32_t> all) {
  pids_.assign(all.begin(), all.end());
  std::erase_if(pids_, [](std::int32_t pid) { return pid < 1; });
}

std::string_view ProcessSampler::executableName(std::int32_t pid, std::string_view fallback) {
  const std::string_view path = table_.path(pid);
  return path.empty() ? fallback : nameFromPath(path);
}

/// Fills the sample at `place`, which may have the names of another process. False if there is
/// nothing to sample.
bool ProcessSampler::fill(std::int32_t pid, std::size_t place) {
  ResourceUsage usage;
  if (!table_.resourceUsage(pid, usage)) return false;

  RawSample& sample = snapshot_[place];
  const Program program{usage.programVersion, usage.startTime};
  const bool hasNames = program.version != 0 && sample.pid == pid && programs_[place] == program;
  if (!hasNames) {
    programs_[place] = {};
    if (!fillNames(pid, sample)) return false;
    programs_[place] = program;
  }
  sample.cpuNanos = nanoseconds(usage.userTime + usage.systemTime, machTimebase());
  sample.diskBytes = usage.diskBytesRead + usage.diskBytesWritten;
  return true;
}

bool ProcessSampler::fillNames(std::int32_t pid, RawSample& sample) {
  static const std::optional<std::string> absent;
  const RunningApplication* application = guiApp(pid);
  const std::optional<std::string>& localizedName =
      application ? application->localizedName() : absent;
  const std::string_view name =
      executableName(pid, localizedName ? std::string_view(*localizedName) : "");
  if (name.empty()) return false;

  sample.pid = pid;
  sample.executable = names_.share(name);
  sample.bundleID.reset();
  if (application && application->bundleIdentifier()) {
    sample.bundleID = names_.share(*application->bundleIdentifier());
  }
  sample.displayName = names_.share(localizedName ? std::string_view(*localizedName) : name);
  return true;
}

Timebase ProcessSampler::machTimebase() {
  if (!machTimebase_) machTimebase_ = table_.timebase();
  return *machTimebase_;
}

}  // namespace tidewell
