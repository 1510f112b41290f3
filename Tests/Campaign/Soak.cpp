#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Linux/Proc/ProcFileSystem.h"
#include "Tests/Campaign/Campaigns.h"
#include "Tests/Campaign/ProgramFigures.h"
#include "Tests/EndToEnd/OwnMachine.h"

namespace staylit::campaign {
namespace {

using namespace std::chrono_literals;
using testing::ChildProgram;
using Steady = std::chrono::steady_clock;

constexpr const char* kForksPerSecond = "200";
constexpr int kFlappingNames = 5;
constexpr long kMostSoakGrowthKB = 2048;

class Soak {
 public:
  explicit Soak(Effort effort)
      : warmUp_(effort.quick ? 6s : 120s), length_(effort.quick ? 10s : 2h) {}

  bool begin() { return machine_.begin(); }

  Outcome run() {
    machine_.writeSettings("graceSeconds = 30\nsustainSeconds = 1\n");
    std::filesystem::create_directory(machine_.folder.path() / "names");
    std::vector<ChildProgram> workers;
    workers.push_back(machine_.workAs(
        "forker", {"forks", (machine_.folder.path() / "names").string(), kForksPerSecond}));
    for (int number = 0; number < kFlappingNames; ++number)
      workers.push_back(machine_.workAs("flapper-" + std::to_string(number), {"flap"}));
    const ChildProgram staylit = machine_.start();
    std::this_thread::sleep_for(warmUp_);
    watch(staylit.pid());
    judge();
    return outcome_;
  }

 private:
  void watch(pid_t pid) {
    platform::ProcFileSystem proc;
    const auto end = Steady::now() + length_;
    for (std::int32_t newest = 0; Steady::now() < end;) {
      const std::int32_t before = std::exchange(newest, proc.newestPid().value_or(0));
      // Now and then the numbers of processes begin again from the lowest.
      if (before > 0 && newest > before) started_ += newest - before;
      memoryKB_.push_back(residentKB(pid));
      descriptors_.push_back(openDescriptors(pid));
      ++outcome_.runs;
      std::this_thread::sleep_for(500ms);
    }
  }

  /// How far all values of the last quarter lie above all of the first. Values that go up and down
  /// do not grow.
  static long growth(const std::vector<long>& values) {
    const auto quarter = static_cast<std::ptrdiff_t>(values.size() / 4);
    const long before = *std::max_element(values.begin(), values.begin() + quarter);
    return *std::min_element(values.end() - quarter, values.end()) - before;
  }

  void judge() {
    if (memoryKB_.back() == 0) outcome_.findings.emplace_back("the program ended");
    if (started_ == 0) outcome_.findings.emplace_back("no program was started beside it");
    const long most = *std::ranges::max_element(memoryKB_) - memoryKB_.front();
    if (most > kMostSoakGrowthKB) {
      outcome_.findings.push_back("the memory grew by " + std::to_string(most) + " KB");
    }
    if (growth(descriptors_) > 0) {
      outcome_.findings.push_back("the descriptors grew from " +
                                  std::to_string(descriptors_.front()) + " to " +
                                  std::to_string(descriptors_.back()));
    }
    outcome_.measured = "memory " + std::to_string(memoryKB_.front()) + " to " +
                        std::to_string(memoryKB_.back()) + " KB, at most +" + std::to_string(most) +
                        " KB; descriptors " + std::to_string(descriptors_.front()) + " to " +
                        std::to_string(descriptors_.back()) + "; " +
                        std::to_string(started_ / length_.count()) + " programs started a second";
  }

  testing::OwnMachine machine_;
  std::chrono::seconds warmUp_;
  std::chrono::seconds length_;
  std::int64_t started_ = 0;
  std::vector<long> memoryKB_;
  std::vector<long> descriptors_;
  Outcome outcome_;
};

}  // namespace

Outcome soak(Effort effort) {
  if (const auto obstacle = testing::OwnMachine::obstacle()) return notPossible(*obstacle);
  Soak soak(effort);
  if (!soak.begin()) return notPossible("logind does not answer");
  return soak.run();
}

}  // namespace staylit::campaign
