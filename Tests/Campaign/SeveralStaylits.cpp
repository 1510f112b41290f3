#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "Tests/Campaign/Campaigns.h"
#include "Tests/EndToEnd/OwnMachine.h"

namespace staylit::campaign {
namespace {

using namespace std::chrono_literals;
using testing::ChildProgram;
using testing::OwnMachine;
using testing::ScopedEnvironment;

constexpr const char* kAllWork = "Aider is working";
constexpr const char* kAllWait = "waiting for work to resume";

class SeveralStaylits {
 public:
  explicit SeveralStaylits(Effort effort) : effort_(effort) {}

  bool begin() { return machine_.begin(); }

  Outcome run() {
    machine_.writeSettings(
        "graceSeconds = 30\nsustainSeconds = 1\ncpuThresholdPercent = 1e9\n"
        "diskThresholdKBps = 1e9\nnetThresholdKBps = 1e9\n");
    for (int run = 0; run < (effort_.quick ? 1 : 20); ++run)
      runOnce(effort_.quick || run % 2 == 1 ? 3 : 2);
    outcome_.measured = effort_.quick
                            ? "only until all wait for work to resume: the grace is 30 s"
                            : "last hold released after " + std::to_string(longest_.count()) + " s";
    return outcome_;
  }

 private:
  void runOnce(std::size_t count) {
    ++outcome_.runs;
    // Each program is in a session of its own, as if several users ran them.
    const ScopedEnvironment session("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/session");
    ChildProgram worker = machine_.workAs("aider", {"cpu"});
    std::vector<ChildProgram> staylits;
    for (std::size_t number = 0; number < count; ++number) {
      const std::filesystem::path runtime = machine_.folder.path("run" + std::to_string(number));
      std::filesystem::create_directory(runtime);
      std::filesystem::permissions(runtime, std::filesystem::perms::owner_all);
      const ScopedEnvironment own("XDG_RUNTIME_DIR", runtime.string());
      staylits.push_back(machine_.start());
    }
    allSay(kAllWork, count, 60s);
    worker.kill();
    std::filesystem::remove(machine_.folder.path() / "aider");
    const auto begin = std::chrono::steady_clock::now();
    allSay(kAllWait, count, 30s);
    if (effort_.quick) return staysSo(count);
    if (!OwnMachine::eventually([this] { return machine_.holdReasons().empty(); }, 120s)) {
      outcome_.findings.push_back(std::to_string(count) +
                                  " hold each other awake two minutes after the last work");
    }
    longest_ = std::max(longest_, std::chrono::duration_cast<std::chrono::seconds>(
                                      std::chrono::steady_clock::now() - begin));
  }

  void allSay(const std::string& reason, std::size_t count, std::chrono::seconds limit) {
    const std::vector<std::string> wanted(count, reason);
    if (OwnMachine::eventually([&] { return machine_.holdReasons() == wanted; }, limit)) return;
    outcome_.findings.push_back("not all of " + std::to_string(count) + " say \"" + reason +
                                "\" after " + std::to_string(limit.count()) + " s, but:" + said());
  }

  std::string said() {
    std::string all;
    for (const std::string& reason : machine_.holdReasons())
      all += " \"" + reason + "\"";
    return all;
  }

  /// Watches until each program has seen the holds of the others.
  void staysSo(std::size_t count) {
    const std::vector<std::string> wanted(count, kAllWait);
    const auto differs = [&] { return machine_.holdReasons() != wanted; };
    if (OwnMachine::eventually(differs, 5s))
      outcome_.findings.emplace_back("one counts another's hold as work");
  }

  Effort effort_;
  OwnMachine machine_;
  Outcome outcome_;
  std::chrono::seconds longest_{0};
};

}  // namespace

Outcome severalStaylits(Effort effort) {
  if (const auto obstacle = OwnMachine::obstacle()) return notPossible(*obstacle);
  SeveralStaylits campaign(effort);
  if (!campaign.begin()) return notPossible("logind does not answer");
  return campaign.run();
}

}  // namespace staylit::campaign
