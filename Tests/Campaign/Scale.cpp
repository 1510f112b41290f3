#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Linux/Proc/CpuClock.h"
#include "Platform/Posix/Files/Descriptor.h"
#include "Tests/Campaign/Campaigns.h"
#include "Tests/Campaign/ProgramFigures.h"
#include "Tests/EndToEnd/OwnMachine.h"
#include "Tests/Platform/Network/LoopbackServer.h"

namespace staylit::campaign {
namespace {

using namespace std::chrono_literals;
using testing::ChildProgram;
using testing::OwnMachine;
using Steady = std::chrono::steady_clock;

constexpr double kMostMilliseconds = 100;
constexpr long kMostMemoryKB = 64 * 1024;
/// The ports of one listener, and the descriptors of one process, allow no more.
constexpr int kPairsOfOneHolder = 4000;
/// A bus allows few connections for one user, so each of them takes many locks.
constexpr int kLocksOfOneHolder = 64;

/// Starts a child that makes something with `make` and then calls `keep`, which never
/// returns. Returns when the thing is made; the result has no process when it cannot be
/// made.
ChildProgram keeper(const std::function<bool()>& make, const std::function<void()>& keep) {
  int ready[2] = {-1, -1};
  if (::pipe2(ready, O_CLOEXEC) != 0) return {};
  ChildProgram child({"unused"}, [&] {
    if (make() && ::write(ready[1], "x", 1) == 1) keep();
    return false;
  });
  ::close(ready[1]);
  char made = 0;
  const bool isMade = ::read(ready[0], &made, 1) == 1;
  ::close(ready[0]);
  return isMade ? std::move(child) : ChildProgram();
}

/// Starts children that make `count` things with `make`, each child up to `most`. A child keeps its
/// things by calling `keep` again and again.
std::vector<ChildProgram> keepers(int count, int most, const std::function<bool(int)>& make,
                                  const std::function<void()>& keep) {
  std::vector<ChildProgram> children;
  for (int left = count; left > 0; left -= most) {
    const auto makeAll = [&] {
      for (int number = std::min(left, most); number > 0; --number) {
        if (!make(number)) return false;
      }
      return true;
    };
    children.push_back(keeper(makeAll, [&keep] {
      while (true)
        keep();
    }));
    if (children.back().pid() <= 0) return {};
  }
  return children;
}

/// Connects one half of `sockets` with the other half, and moves a few bytes all the time.
std::vector<ChildProgram> socketHolders(int sockets) {
  // Each child makes a server of its own, because one server has too few ports.
  std::optional<platform::LoopbackServer> server;
  std::vector<platform::Descriptor> ends;
  return keepers(
      sockets / 2, kPairsOfOneHolder,
      [&](int) {
        if (!server) server.emplace(AF_INET);
        ends.push_back(server->connect());
        ends.push_back(server->accept());
        return static_cast<bool>(ends.back());
      },
      [&] {
        platform::sendBytes(ends.front(), 1);
        std::this_thread::sleep_for(200ms);
      });
}

/// Starts processes that hold `count` locks of logind.
std::vector<ChildProgram> lockHolders(int count) {
  struct Connection {
    platform::EventLoop loop;
    platform::Bus bus{loop, platform::Bus::Kind::system};
  };
  std::unique_ptr<Connection> connection;
  std::vector<platform::Descriptor> locks;
  return keepers(
      count, kLocksOfOneHolder,
      [&](int number) {
        if (!connection) connection = std::make_unique<Connection>();
        locks.push_back(testing::inhibit(connection->bus, "idle",
                                         "holder " + std::to_string(number), "the campaign"));
        return static_cast<bool>(locks.back());
      },
      [] { ::pause(); });
}

/// Starts `count` processes under `names` names. A tenth of them wakes ten times a second.
std::vector<ChildProgram> crowdOf(int count, int names, const std::filesystem::path& folder) {
  std::vector<ChildProgram> crowd;
  std::filesystem::copy_file(WORKER_PROGRAM, folder / "name");
  for (int number = 0; number < count; ++number) {
    const std::string name = folder / ("name-" + std::to_string(number % names));
    std::error_code isThere;
    std::filesystem::create_hard_link(folder / "name", name, isThere);
    const std::string kind = number % 10 == 0 ? "wake" : "rest";
    crowd.emplace_back(std::vector<std::string>{name, kind});
  }
  return crowd;
}

bool haveAllBegun(const std::vector<ChildProgram>& crowd) {
  return std::ranges::all_of(crowd, [](const ChildProgram& each) { return each.pid() > 0; });
}

/// A machine with very much of one thing. Measures what that costs the program.
class Crowded {
 public:
  explicit Crowded(Effort effort, Outcome& outcome) : effort_(effort), outcome_(outcome) {}

  bool begin() { return machine_.begin(); }
  OwnMachine& machine() { return machine_; }

  /// Measures the dearest tick, the memory and the load, once the program has run for a while.
  void measure(const std::string& crowd) {
    machine_.writeSettings("graceSeconds = 30\n");
    const ChildProgram staylit = machine_.start();
    OwnMachine::eventually([this] { return !machine_.holdReason().empty(); }, 60s);
    const double start = static_cast<double>(mainThreadNanos(staylit.pid())) / 1e6;
    std::this_thread::sleep_for(effort_.quick ? 500ms : 10s);
    const auto begin = Steady::now();
    const std::uint64_t before = clock_.nanoseconds(staylit.pid()).value_or(0);
    const double most = dearestTick(staylit.pid(), effort_.quick ? 2500ms : 70s);
    const std::uint64_t used = clock_.nanoseconds(staylit.pid()).value_or(before) - before;
    const auto length = (Steady::now() - begin).count();
    const long memory = residentKB(staylit.pid());
    ++outcome_.runs;
    const std::string what =
        crowd + ": tick " + rounded(most) + " ms, " + std::to_string(memory / 1024 + 1) + " MB, " +
        rounded(100.0 * static_cast<double>(used) / static_cast<double>(length)) +
        " % CPU (start " + rounded(start) + " ms)";
    if (!outcome_.measured.empty()) outcome_.measured += "; ";
    outcome_.measured += what;
    if (memory == 0) outcome_.findings.push_back(crowd + ": the program ended");
    if (most > kMostMilliseconds || memory > kMostMemoryKB) outcome_.findings.push_back(what);
  }

 private:
  /// `figure`, rounded up.
  static std::string rounded(double figure) { return std::to_string(static_cast<int>(figure) + 1); }

  /// The most processor time that the main thread used between two rests, in milliseconds.
  static double dearestTick(pid_t pid, std::chrono::milliseconds length) {
    const auto end = Steady::now() + length;
    std::uint64_t last = mainThreadNanos(pid);
    std::uint64_t begin = last;
    std::uint64_t most = 0;
    for (auto moved = Steady::now(); Steady::now() < end;) {
      std::this_thread::sleep_for(20ms);
      const std::uint64_t now = mainThreadNanos(pid);
      if (now != last) moved = Steady::now();
      last = now;
      most = std::max(most, last - begin);
      if (Steady::now() - moved > 500ms) begin = last;
    }
    return static_cast<double>(most) / 1e6;
  }

  Effort effort_;
  Outcome& outcome_;
  OwnMachine machine_;
  platform::KernelCpuClock clock_;
};

class Scale {
 public:
  explicit Scale(Effort effort) : effort_(effort) {}

  Outcome run() {
    for (const int namesOfThousand : {10, 1000}) {
      with([&](Crowded& crowded) {
        const int count = effort_.quick ? 400 : 10'000;
        const int names = count * namesOfThousand / 1000;
        const auto crowd = crowdOf(count, names, crowded.machine().folder.path());
        if (!haveAllBegun(crowd)) outcome_.findings.emplace_back("not so many processes began");
        crowded.measure(std::to_string(count) + " processes of " + std::to_string(names) +
                        " names");
      });
    }
    with([this](Crowded& crowded) {
      const int count = effort_.quick ? 4000 : 100'000;
      const auto holders = socketHolders(count);
      if (holders.empty()) outcome_.findings.emplace_back("this machine has not so many sockets");
      crowded.measure(std::to_string(count) + " sockets");
    });
    with([this](Crowded& crowded) {
      // Logind grants no more; the program itself wants two.
      const int count = effort_.quick ? 500 : 8190;
      const auto holders = lockHolders(count);
      if (holders.empty()) outcome_.findings.emplace_back("logind gives not so many locks");
      crowded.measure(std::to_string(count) + " inhibitors");
    });
    with([this](Crowded& crowded) {
      const int count = effort_.quick ? 1000 : 5000;
      for (int number = 0; number < count; ++number)
        writeDesktopFile(crowded.machine(), number);
      const testing::ScopedEnvironment data("XDG_DATA_HOME", crowded.machine().folder.path());
      crowded.measure(std::to_string(count) + " desktop files");
    });
    return outcome_;
  }

 private:
  void with(const std::function<void(Crowded&)>& measure) {
    Crowded crowded(effort_, outcome_);
    if (!crowded.begin()) {
      outcome_.findings.emplace_back("logind does not answer");
    } else {
      measure(crowded);
    }
  }

  static void writeDesktopFile(const OwnMachine& machine, int number) {
    const std::string name = "program-" + std::to_string(number);
    machine.folder.write("applications/" + name + ".desktop",
                         "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=/usr/bin/" +
                             name + " %U\nTryExec=/usr/bin/" + name + "\n");
  }

  Effort effort_;
  Outcome outcome_;
};

/// Raises the limit of this process. The processes that it starts, logind for one, inherit the
/// limit.
void allowManyDescriptors() {
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

Outcome scale(Effort effort) {
  if (const auto obstacle = OwnMachine::obstacle()) return notPossible(*obstacle);
  allowManyDescriptors();
  return Scale(effort).run();
}

}  // namespace staylit::campaign
