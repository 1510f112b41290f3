#include "Platform/Linux/Proc/LastRun.h"

#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Tidewell/TextReading.h"

namespace platform {
namespace {

/// A process with more threads than this is not looked at.
constexpr std::size_t kMostThreads = 5000;

/// Moves the thread to processors, and back at the end.
class Roaming {
 public:
  Roaming() { isAllowed_ = ::sched_getaffinity(0, sizeof home_, &home_) == 0; }
  ~Roaming() {
    if (isAllowed_) ::sched_setaffinity(0, sizeof home_, &home_);
  }
  Roaming(const Roaming&) = delete;
  Roaming& operator=(const Roaming&) = delete;

  /// The time by that processor's clock.
  std::optional<double> timeAt(ProcFileSystem& proc, int processor) const {
    if (!isAllowed_ || processor < 0 || processor >= CPU_SETSIZE) return std::nullopt;
    cpu_set_t there;
    CPU_ZERO(&there);
    CPU_SET(static_cast<std::size_t>(processor), &there);
    if (::sched_setaffinity(0, sizeof there, &there) != 0) return std::nullopt;
    const std::string file = "task/" + std::to_string(::gettid()) + "/sched";
    const auto text = proc.read(::getpid(), file.c_str());
    return text ? parseLastRun(*text) : std::nullopt;
  }

 private:
  cpu_set_t home_{};
  bool isAllowed_ = false;
};

struct FolderCloser {
  void operator()(DIR* folder) const { closedir(folder); }
};

std::vector<std::int32_t> threadsOf(ProcFileSystem& proc, std::int32_t pid) {
  std::vector<std::int32_t> threads;
  const Descriptor descriptor = proc.open(pid, "task");
  // The stream wants a descriptor of its own.
  const int own = descriptor ? ::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, 3) : -1;
  if (own < 0) return threads;
  const std::unique_ptr<DIR, FolderCloser> folder(fdopendir(own));
  if (!folder) {
    ::close(own);
    return threads;
  }
  while (const dirent* entry = readdir(folder.get())) {
    if (const auto thread = tidewell::wholeNumber<std::int32_t>(entry->d_name)) {
      threads.push_back(*thread);
    }
  }
  return threads;
}

std::optional<std::string> fileOf(ProcFileSystem& proc, std::int32_t pid, std::int32_t thread,
                                  const char* name) {
  const std::string file = "task/" + std::to_string(thread) + "/" + name;
  const auto text = proc.read(pid, file.c_str());
  return text ? std::optional(std::string(*text)) : std::nullopt;
}

/// When a thread of the process ran last on each processor; absent when that is not known of one.
std::optional<std::map<int, double>> lastRuns(ProcFileSystem& proc, std::int32_t pid) {
  const std::vector<std::int32_t> threads = threadsOf(proc, pid);
  if (threads.empty() || threads.size() > kMostThreads) return std::nullopt;
  std::map<int, double> result;
  for (const std::int32_t thread : threads) {
    const auto sched = fileOf(proc, pid, thread, "sched");
    const auto stat = fileOf(proc, pid, thread, "stat");
    const auto lastRun = sched ? parseLastRun(*sched) : std::nullopt;
    const auto processor = stat ? parseProcessor(*stat) : std::nullopt;
    if (!lastRun || !processor) return std::nullopt;
    double& latest = result[*processor];
    latest = std::max(latest, *lastRun);
  }
  return result;
}

}  // namespace

std::optional<tidewell::Seconds> timeSinceLastRun(ProcFileSystem& proc, std::int32_t pid) {
  const auto runs = lastRuns(proc, pid);
  if (!runs) return std::nullopt;
  const Roaming roaming;
  std::optional<double> shortest;
  for (const auto& [processor, lastRun] : *runs) {
    const auto now = roaming.timeAt(proc, processor);
    if (!now) return std::nullopt;
    const double quiet = std::max(0.0, *now - lastRun);
    shortest = shortest ? std::min(*shortest, quiet) : quiet;
  }
  return shortest ? std::optional(tidewell::Seconds(*shortest)) : std::nullopt;
}

std::optional<double> parseLastRun(std::string_view text) {
  constexpr std::string_view kLine = "\nse.exec_start";
  const std::size_t found = text.find(kLine);
  if (found == std::string_view::npos) return std::nullopt;
  std::string_view line = text.substr(found + kLine.size());
  line = line.substr(0, line.find('\n'));
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  // Milliseconds, a point and six digits.
  const std::string_view number = tidewell::trimmed(line.substr(colon + 1));
  const std::size_t point = number.find('.');
  if (point == std::string_view::npos) return std::nullopt;
  const auto milliseconds = tidewell::wholeNumber<std::uint64_t>(number.substr(0, point));
  // A thread that waits on another processor than its last has 0 there.
  if (!milliseconds || *milliseconds == 0) return std::nullopt;
  return static_cast<double>(*milliseconds) / 1000;
}

std::optional<int> parseProcessor(std::string_view text) {
  const std::size_t close = text.rfind(')');
  if (close == std::string_view::npos) return std::nullopt;
  std::string_view rest = text.substr(close + 1);
  // The state, the first behind the name, is the third field, and the processor the 39th.
  for (int field = 3; field <= 39; ++field) {
    rest.remove_prefix(std::min(rest.size(), rest.find_first_not_of(" \n")));
    const std::string_view value = rest.substr(0, rest.find_first_of(" \n"));
    if (field == 39) return tidewell::wholeNumber<int>(value);
    rest.remove_prefix(value.size());
  }
  return std::nullopt;
}

}  // namespace platform
