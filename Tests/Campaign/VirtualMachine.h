#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "Staylit/StaylitEngine.h"
#include "Tests/Campaign/NaiveRules.h"
#include "Tests/Fakes/ComposedPorts.h"

namespace staylit::campaign {

/// A machine with an invented time, on which programs work and end, batteries drain, the machine
/// sleeps, and people pause, resume and edit. The program's own engine and the naive rules both see
/// it. The same seed gives the same life.
class VirtualMachine {
 public:
  explicit VirtualMachine(std::uint64_t seed);
  ~VirtualMachine();

  /// Lets some time pass and the next thing happen. Returns in which value the engine differs from
  /// the rules afterwards, in a sentence; absent when they agree.
  std::optional<std::string> step();

  /// How the two logs differ; absent when they agree.
  std::optional<std::string> compareLogs() const;

  /// How long the machine has been awake.
  [[nodiscard]] double hours() const { return static_cast<double>(awakeNanos_) / 3.6e12; }
  [[nodiscard]] std::int64_t ticks() const { return ticks_; }

 private:
  struct Program;
  struct Process;

  static constexpr std::int64_t kStart = 3LL * 3600 * 1'000'000'000;

  std::uint64_t pick(std::uint64_t count) { return random_() % count; }
  bool happens(double probability);
  template <typename Value>
  Value any(std::initializer_list<Value> values) {
    return *(values.begin() + static_cast<std::ptrdiff_t>(pick(values.size())));
  }

  std::int64_t nextInterval();
  void letTimePass(std::int64_t nanos);
  void changeProcesses(std::int64_t nanos);
  void begin(std::int64_t nanos);
  void setMode(Process& process);
  void showProcesses();
  void showApplications();
  void changePower();
  void changeSettings();
  void changeAssertions();
  void finishNetworkRun();
  void sleepAndWake();

  [[nodiscard]] NaiveSight look() const;
  std::vector<std::string> busyIds();
  void tickBoth();
  void pauseBoth(bool paused);
  std::optional<std::string> compare();

  std::mt19937_64 random_;
  bool countsWhole_;
  tidewell::ComposedPorts fakes_;
  std::unique_ptr<StaylitEngine> engine_;
  NaiveRules rules_;
  NaiveSettings settings_;
  std::vector<Process> processes_;
  std::vector<NaiveAssertion> assertions_;
  NaiveBattery battery_;
  std::map<std::int32_t, std::uint64_t> networkBytes_;  ///< As the last run found them.
  bool runIsUnderWay_ = false;
  std::int32_t lastPid_ = 1000;
  std::int64_t nanos_ = kStart;
  std::int64_t awakeNanos_ = 0;
  std::int64_t ticks_ = 0;
};

}  // namespace staylit::campaign
