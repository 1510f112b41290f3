#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "Benchmarks/Detection/JsonWriter.h"
#include "Benchmarks/Detection/MachineCpu.h"
#include "Benchmarks/Detection/Options.h"
#include "Benchmarks/Detection/WatchedEngine.h"
#include "Benchmarks/Detection/Workload.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Tidewell/Ports/Ports.h"
#include "Tidewell/TextMap.h"

/// One workload, watched by two engines side by side: "whole" is the program as it is, "plain" the
/// same on a process table that tells of living processes only.
///
/// Both start first. The applications that are over a threshold before the workload starts are put
/// on the list of ignored ones. Then the workload runs until it ends or its time is over, and both
/// are watched until neither holds, or for `Options::after` at most. Main thread only.
class Measurement {
 public:
  explicit Measurement(Options options);
  ~Measurement();

  /// False when the workload could not be started or the measurement was broken off.
  bool run();

  /// All that was measured, as a JSON document.
  [[nodiscard]] std::string document() const;

 private:
  using SteadyTime = std::chrono::steady_clock::time_point;

  void step();
  void startWorkload(SteadyTime now);
  void ignoreWhatIsBusy();
  void watchWork(SteadyTime now);
  void watchRelease(SteadyTime now);
  [[nodiscard]] tidewell::Seconds longestWait() const;
  static void writeSettings(JsonWriter& json);
  void writeWorkload(JsonWriter& json) const;

  // The ports come before what is made with them.
  Options options_;
  Workload workload_;  ///< Before there is any thread.
  std::shared_ptr<platform::EventLoop> loop_;
  std::unique_ptr<tidewell::Ports> wholePorts_;
  std::unique_ptr<tidewell::Ports> plainPorts_;
  tidewell::InstalledPorts installed_;  ///< Those of "whole"; what is static uses them for both.
  WatchedEngine whole_;
  WatchedEngine plain_;
  MachineCpu machineCpu_;
  SteadyTime begin_;
  std::optional<SteadyTime> workBegin_;
  std::optional<SteadyTime> workEnd_;
  std::optional<int> exitStatus_;  ///< Absent for a workload that was ended.
  double cpuBefore_ = 0;           ///< Percent of all processors.
  double cpuDuring_ = 0;           ///< Likewise.
  tidewell::TextSet ignored_;
};
