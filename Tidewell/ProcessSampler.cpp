#include "Tidewell/ProcessSampler.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>

#include "Tidewell/CheckedArithmetic.h"

namespace tidewell {
namespace {

constexpr std::size_t kIdentifierBytes = sizeof(std::int32_t);

/// The last piece between slashes that is not empty.
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

ProcessSampler::ProcessSampler(ProcessTable& table, RunningApplications& applications)
    : table_(table), applications_(applications) {}

const std::vector<RawSample>& ProcessSampler::sample() {
  refreshGUIApps();
  const std::vector<std::int32_t>& pids = livePIDs();
  std::size_t used = 0;
  for (const std::int32_t pid : pids) {
    if (used == snapshot_.size()) snapshot_.emplace_back();
    if (fill(pid, snapshot_[used])) ++used;
  }
  snapshot_.resize(used);
  return snapshot_;
}

std::uint64_t ProcessSampler::nanoseconds(std::uint64_t time, Timebase timebase) {
  if (timebase.denom == 0) fatalError("the time base has no denominator");
  // Splitting off the remainder keeps the product within 64 bits for long-lived processes.
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
  // A path of slashes only is the root folder, whose name is a slash.
  const std::string_view name = lastComponent(path);
  return name.empty() && !path.empty() ? path.substr(0, 1) : name;
}

void ProcessSampler::refreshGUIApps() {
  const auto all = applications_.all();
  guiApps_.assign(all.begin(), all.end());
  if (std::ranges::is_sorted(guiApps_, {}, pidOf)) return;
  std::ranges::stable_sort(guiApps_, {}, pidOf);
}

/// Of several with one identifier, the one that came last.
const RunningApplication* ProcessSampler::guiApp(std::int32_t pid) const {
  const auto end = std::ranges::upper_bound(guiApps_, pid, {}, pidOf);
  if (end == guiApps_.begin() || pidOf(*std::prev(end)) != pid) return nullptr;
  return std::prev(end)->get();
}

std::vector<std::int32_t>& ProcessSampler::livePIDs() {
  pids_.clear();
  const int needed = table_.listPids({});
  if (needed < 1) return pids_;
  // Exactly as large as that answer: what starts in between is seen by the next snapshot.
  pids_.assign(static_cast<std::size_t>(needed) / kIdentifierBytes, 0);
  const int written = table_.listPids(pids_);
  const std::size_t listed = written < 1 ? 0 : static_cast<std::size_t>(written) / kIdentifierBytes;
  pids_.resize(std::min(pids_.size(), listed));
  std::erase_if(pids_, [](std::int32_t pid) { return pid < 1; });
  return pids_;
}

std::string_view ProcessSampler::executableName(std::int32_t pid, std::string_view fallback) {
  const int length = table_.path(pid, path_);
  if (length < 1) return fallback;
  const std::size_t size = std::min(static_cast<std::size_t>(length), path_.size());
  return nameFromPath({path_.data(), size});
}

bool ProcessSampler::fill(std::int32_t pid, RawSample& sample) {
  ResourceUsage usage;
  if (!table_.resourceUsage(pid, usage)) return false;

  static const std::optional<std::string> absent;
  const RunningApplication* application = guiApp(pid);
  const std::optional<std::string>& localizedName =
      application ? application->localizedName() : absent;
  const std::string_view name =
      executableName(pid, localizedName ? std::string_view(*localizedName) : "");
  if (name.empty()) return false;

  sample.pid = pid;
  sample.executable.assign(name);
  sample.bundleID = application ? application->bundleIdentifier() : absent;
  sample.displayName.assign(localizedName ? std::string_view(*localizedName) : name);
  sample.cpuNanos = nanoseconds(usage.userTime + usage.systemTime, machTimebase());
  sample.diskBytes = usage.diskBytesRead + usage.diskBytesWritten;
  return true;
}

Timebase ProcessSampler::machTimebase() {
  if (!machTimebase_) machTimebase_ = table_.timebase();
  return *machTimebase_;
}

}  // namespace tidewell
