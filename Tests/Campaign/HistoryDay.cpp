#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Linux/Files/HistoryFolder.h"
#include "Platform/Posix/Files/LineFiles.h"
#include "Staylit/History/HistoryReader.h"
#include "Staylit/History/HistoryTimeline.h"
#include "Tests/Campaign/Campaigns.h"
#include "Tests/EndToEnd/OwnMachine.h"

namespace staylit::campaign {
namespace {

using namespace std::chrono_literals;
using testing::ChildProgram;
using Wall = tidewell::WallTime;

/// The real program among work that comes and goes, pauses, and now and then a kill. Meanwhile the
/// login service is asked ten times a second whether a hold is there; in the end the history must
/// say the same of each of these moments.
class HistoryDay {
 public:
  [[nodiscard]] bool begin() { return machine_.begin(); }

  Outcome run(Effort effort) {
    machine_.writeSettings(
        "graceSeconds = 30\nsustainSeconds = 1\ncpuThresholdPercent = 2\n"
        "diskThresholdKBps = 1e9\nnetThresholdKBps = 1e9\n");
    staylit_.emplace(machine_.start());
    const int spells = effort.quick ? 1 : 12;
    for (int spell = 0; spell < spells; ++spell)
      live(spell);
    ::kill(staylit_->pid(), SIGTERM);
    testing::OwnMachine::wait(*staylit_);
    watch(1s);
    compare();
    return outcome_;
  }

 private:
  struct Sample {
    Wall at;
    bool isHeld = false;
  };

  static Wall now() { return std::chrono::system_clock::now(); }

  void live(int spell) {
    ++outcome_.runs;
    const auto randomly = [this](std::chrono::milliseconds least, std::chrono::milliseconds most) {
      return std::chrono::milliseconds(
          std::uniform_int_distribution(least.count(), most.count())(random_));
    };
    {
      ChildProgram worker = machine_.workAs("work" + std::to_string(spell), {"cpu"});
      watch(randomly(5s, 15s));
      if (spell % 4 == 1) pauseFor(randomly(3s, 8s));
      if (spell % 4 == 3) killAndStart();
      worker.kill();
    }
    watch(randomly(5s, 45s));
  }

  void pauseFor(std::chrono::milliseconds length) {
    testing::OwnMachine::wait(machine_.start({"--toggle-pause"}));
    watch(length);
    testing::OwnMachine::wait(machine_.start({"--toggle-pause"}));
    watch(5s);
  }

  void killAndStart() {
    staylit_->kill();
    kills_.push_back(now());
    watch(2s);
    staylit_.emplace(machine_.start());
    watch(5s);
  }

  void watch(std::chrono::milliseconds length) {
    const auto end = std::chrono::steady_clock::now() + length;
    while (std::chrono::steady_clock::now() < end) {
      const Wall before = now();
      const bool isHeld = !machine_.holdReason().empty();
      samples_.push_back({before + (now() - before) / 2, isHeld});
      std::this_thread::sleep_for(100ms);
    }
  }

  [[nodiscard]] HistoryTimeline timeline() const {
    const auto content = platform::LineFiles::read(machine_.folder.path() / "state/staylit/history",
                                                   platform::describeError);
    const History history = historyIn({content.text, content.lastWritten, content.isInUse}, now());
    return timelineOf(history, samples_.front().at - 1h, now() + 1h);
  }

  void compare() {
    std::vector<std::pair<Wall, Wall>> held;
    for (const auto& hold : timeline().holds) {
      for (const auto& part : hold.parts) {
        if (!part.isGranted()) continue;
        const bool goesOn = !held.empty() && held.back().second == part.from;
        if (goesOn) {
          held.back().second = part.to;
        } else {
          held.emplace_back(part.from, part.to);
        }
      }
    }
    std::chrono::milliseconds furthest{0};
    std::int64_t unknown = 0;
    for (const Sample& sample : samples_) {
      const auto distance = [&held, &sample] {
        std::chrono::milliseconds nearest = 24h;
        for (const auto& [from, to] : held) {
          for (const Wall edge : {from, to})
            nearest = std::min(nearest, std::chrono::duration_cast<std::chrono::milliseconds>(
                                            std::chrono::abs(edge - sample.at)));
        }
        return nearest;
      };
      const bool isToldHeld = std::ranges::any_of(held, [&sample](const auto& span) {
        return sample.at >= span.first && sample.at < span.second;
      });
      if (isToldHeld == sample.isHeld) continue;
      if (isBeforeKill(sample)) {
        ++unknown;
      } else {
        furthest = std::max(furthest, distance());
      }
    }
    if (furthest > 500ms) {
      outcome_.findings.push_back("the history and the login service differ " +
                                  std::to_string(furthest.count()) + " ms from an edge");
    }
    outcome_.measured = std::to_string(samples_.size()) + " moments, " +
                        std::to_string(held.size()) + " holds; they differ within " +
                        std::to_string(furthest.count()) + " ms of an edge; " +
                        std::to_string(kills_.size()) + " kills, before which " +
                        std::to_string(unknown) + " moments of a hold are not in the history";
  }

  /// The end of a hold that a kill ended is known to a minute.
  [[nodiscard]] bool isBeforeKill(const Sample& sample) const {
    return std::ranges::any_of(kills_, [&sample](Wall kill) {
      return sample.isHeld && sample.at < kill + 100ms && kill - sample.at < 62s;
    });
  }

  testing::OwnMachine machine_;
  std::optional<ChildProgram> staylit_;
  std::vector<Sample> samples_;
  std::vector<Wall> kills_;
  std::mt19937 random_{1};
  Outcome outcome_;
};

}  // namespace

Outcome historyDay(Effort effort) {
  if (const auto obstacle = testing::OwnMachine::obstacle()) return notPossible(*obstacle);
  HistoryDay day;
  if (!day.begin()) return notPossible("logind does not answer");
  return day.run(effort);
}

}  // namespace staylit::campaign
