// A day on a tape: 300 applications, of which 40 use something at each tick.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <utility>

#include "Staylit/Prefs.h"
#include "Staylit/Replay/Replay.h"
#include "Staylit/Replay/TapeWriter.h"
#include "Tests/Fakes/FakeText.h"

namespace {

using namespace std::chrono_literals;

constexpr int kTicksOfADay = 43'200;
constexpr std::size_t kApplications = 300;
constexpr int kWorking = 40;

class MemoryOutput : public staylit::TapeOutput {
 public:
  Answer append(std::string piece) override {
    content += piece;
    return Answer::goOn;
  }
  std::string content;
};

class Day {
 public:
  Day() {
    inputs_.settings = staylit::registeredSettings();
    for (std::size_t number = 0; number < kApplications; ++number) {
      const std::string name = "program-" + std::to_string(number);
      inputs_.applications.push_back({name, std::nullopt, name, {}, true});
    }
    writer_.begin({at_, tidewell::WallTime(std::chrono::sys_days(std::chrono::year(2026) / 1 / 1)),
                   "Staylit", 1, true, false});
  }

  void tick() {
    at_ += 2s + std::chrono::microseconds(random_() % 1000);
    for (int count = 0; count < kWorking; ++count) {
      auto& usage = inputs_.applications[random_() % kApplications].usage;
      usage.cpuNanos += random_() % 2'000'000;
      if (random_() % 8 == 0) usage.diskBytes += random_() % 65'536;
      if (random_() % 8 == 0) usage.netBytes += random_() % 4'096;
    }
    staylit::TapedTick tick;
    tick.at = at_;
    writer_.add(tick, inputs_);
  }

  std::string finish() {
    writer_.flush();
    return std::move(output_.content);
  }

 private:
  std::mt19937 random_{1};
  tidewell::Moment at_{1h};
  staylit::TapedInputs inputs_;
  MemoryOutput output_;
  staylit::TapeWriter writer_{output_};
};

void writeOneTick(benchmark::State& state) {
  Day day;
  for ([[maybe_unused]] const auto iteration : state)
    day.tick();
}
BENCHMARK(writeOneTick);

void replayADay(benchmark::State& state) {
  Day day;
  for (int ticks = 0; ticks < kTicksOfADay; ++ticks)
    day.tick();
  const std::string tape = day.finish();
  const auto text = std::make_shared<tidewell::FakeText>();
  for ([[maybe_unused]] const auto iteration : state) {
    staylit::Replay replay(text, {});
    replay.play(tape);
    benchmark::DoNotOptimize(replay.finish());
  }
  state.counters["bytes"] = static_cast<double>(tape.size());
}
BENCHMARK(replayADay)->Unit(benchmark::kSecond);

}  // namespace
