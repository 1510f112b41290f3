// Measures the real program from outside, among many processes: the CPU time of each of its ticks,
// its memory and its wake-ups, side by side with `top -d 2`, which looks at the same processes.
//
//   tick-cost PROCESSES [SECONDS [PROGRAM...]]
//
// Each PROGRAM is another build of `staylit`, to be measured in the same crowd at the same time.

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "Benchmarks/Crowd.h"
#include "Platform/Linux/Proc/CpuClock.h"

namespace {

using namespace std::chrono_literals;

/// One watched program, its output thrown away.
class Program {
 public:
  explicit Program(std::vector<std::string> arguments) {
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
      pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int stream = 0; stream < 3; ++stream) {
      posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", 2, 0);
    }
    if (posix_spawnp(&pid_, pointers[0], &actions, nullptr, pointers.data(), environ) != 0) {
      std::fprintf(stderr, "cannot start %s\n", pointers[0]);
      std::exit(1);
    }
    posix_spawn_file_actions_destroy(&actions);
  }
  ~Program() {
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  /// Milliseconds of CPU time since the last call.
  double cpu() {
    const std::uint64_t now = platform::KernelCpuClock().nanoseconds(pid_).value_or(before_);
    const double milliseconds = static_cast<double>(now - before_) / 1e6;
    before_ = now;
    return milliseconds;
  }

  /// The number behind `label` in a file of the program, summed over its occurrences.
  [[nodiscard]] long number(const std::string& file, const std::string& label) const {
    std::ifstream stream(file);
    long sum = 0;
    for (std::string line; std::getline(stream, line);) {
      if (line.starts_with(label)) sum += std::atol(line.c_str() + label.size());
    }
    return sum;
  }
  [[nodiscard]] std::string file(const std::string& name) const {
    return "/proc/" + std::to_string(pid_) + "/" + name;
  }
  [[nodiscard]] long wakeUps() const {
    long sum = 0;
    for (const auto& thread : std::filesystem::directory_iterator(file("task"))) {
      sum += number(thread.path() / "status", "voluntary_ctxt_switches:");
    }
    return sum;
  }

 private:
  pid_t pid_ = 0;
  std::uint64_t before_ = 0;
};

double quantile(std::vector<double> values, double which) {
  std::ranges::sort(values);
  return values[static_cast<std::size_t>(which * static_cast<double>(values.size() - 1))];
}

/// A build of the program, and what each of its ticks cost.
struct Measured {
  explicit Measured(const std::string& path) : program({path}), name(path) {}

  Program program;
  std::string name;
  std::vector<double> ticks;  ///< Milliseconds.
  long wakeUpsBefore = 0;

  void print(double topMedian, int seconds) const {
    const double median = quantile(ticks, 0.5);
    std::printf("%s: tick %.2f ms (p90 %.2f), ratio %.1f; ", name.c_str(), median,
                quantile(ticks, 0.9), topMedian / median);
    std::printf("RSS %ld KB, PSS %ld KB, %.2f wake-ups/s\n",
                program.number(program.file("smaps_rollup"), "Rss:"),
                program.number(program.file("smaps_rollup"), "Pss:"),
                static_cast<double>(program.wakeUps() - wakeUpsBefore) / seconds);
  }
};

void measure(int processes, int seconds, const std::vector<std::string>& paths) {
  const Crowd crowd(processes, 400);
  std::deque<Measured> builds;
  for (const std::string& path : paths)
    builds.emplace_back(path);
  Program top({"top", "-b", "-d", "2"});
  std::this_thread::sleep_for(10s);

  std::vector<double> topTimes;
  top.cpu();
  for (Measured& build : builds) {
    build.program.cpu();
    build.wakeUpsBefore = build.program.wakeUps();
  }
  for (int elapsed = 0; elapsed < seconds; elapsed += 2) {
    std::this_thread::sleep_for(2s);
    topTimes.push_back(top.cpu());
    for (Measured& build : builds)
      build.ticks.push_back(build.program.cpu());
  }
  const double topMedian = quantile(topTimes, 0.5);
  std::printf("%d processes; a refresh of top: %.2f ms\n", processes, topMedian);
  for (const Measured& build : builds)
    build.print(topMedian, seconds);
}

}  // namespace

int main(int argc, char** argv) {
  const int processes = argc > 1 ? std::atoi(argv[1]) : 300;
  const int seconds = argc > 2 ? std::atoi(argv[2]) : 60;
  std::vector<std::string> paths{STAYLIT};
  for (int index = 3; index < argc; ++index)
    paths.emplace_back(argv[index]);
  // Their settings are their own, not those of whoever measures.
  std::string folder = (std::filesystem::temp_directory_path() / "tick-cost-XXXXXX").string();
  if (mkdtemp(folder.data()) == nullptr) return 1;
  setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
  setenv("XDG_STATE_HOME", folder.c_str(), 1);
  // On a session bus, all but the first would end at once.
  if (paths.size() > 1) {
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    setenv("XDG_RUNTIME_DIR", "/nonexistent", 1);
  }
  measure(processes, seconds, paths);
  std::filesystem::remove_all(folder);
}
