#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "Benchmarks/Detection/JsonWriter.h"
#include "Benchmarks/Detection/RecordingPower.h"
#include "Staylit/StaylitEngine.h"
#include "Tidewell/BusyApp.h"
#include "Tidewell/Ports/Ports.h"
#include "Tidewell/TextMap.h"
#include "Tidewell/Thresholds.h"

/// The real engine on ports of its own, and a record of all that it sees and does. Main thread
/// only.
class WatchedEngine {
 public:
  using SteadyTime = std::chrono::steady_clock::time_point;

  /// Replaces the power management of `ports`, which must outlive this.
  explicit WatchedEngine(tidewell::Ports& ports);
  ~WatchedEngine();
  WatchedEngine(const WatchedEngine&) = delete;
  WatchedEngine& operator=(const WatchedEngine&) = delete;

  void start();
  [[nodiscard]] bool isHolding() const { return power_->isHolding(); }

  /// Adds the keys of all applications that were over a threshold on any tick so far.
  void collectSeen(tidewell::TextSet& keys) const;

  /// Writes the record as one object, with times in seconds since `origin`.
  void write(JsonWriter& json, SteadyTime origin) const;

 private:
  struct Tick {
    SteadyTime at;
    staylit::EngineStatus status;
    bool isHolding;
    std::vector<tidewell::BusyApp> busy;
    std::vector<tidewell::BusyApp> seen;  ///< Over a threshold, sustained or not.
  };

  tidewell::Ports& withRecorder(tidewell::Ports& ports);
  void record(const staylit::EngineStatus& status);

  /// Before the engine, which is made with it.
  std::shared_ptr<RecordingPower> power_ = std::make_shared<RecordingPower>();
  std::vector<Tick> ticks_;
  staylit::StaylitEngine engine_;
  staylit::Subscription subscription_;
};
