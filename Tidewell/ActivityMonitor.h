#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Tidewell/AppCategory.h"
#include "Tidewell/BusyApp.h"
#include "Tidewell/NetworkSampler.h"
#include "Tidewell/Ports/Ports.h"
#include "Tidewell/PowerAssertionReader.h"
#include "Tidewell/ProcessSampler.h"
#include "Tidewell/TextMap.h"
#include "Tidewell/Thresholds.h"

namespace tidewell {

/// What the ports told an activity monitor at one tick. Valid during the call that hands it over.
struct TickInputs {
  Moment at;
  const std::vector<RawSample>& samples;
  const NetworkTotals& netTotals;
  /// The programs that hold a sleep assertion of their own, with the ignored ones; null when nobody
  /// was asked at this tick.
  const std::vector<std::string>* asserting;
};

/// Is told the inputs of each tick. Main thread only.
class TickListener {
 public:
  virtual ~TickListener() = default;
  virtual void ticked(const TickInputs& inputs) = 0;
};

/// Turns successive snapshots of all processes into the applications that work hard enough, for
/// long enough, to keep the machine awake.
///
/// Owned by the engine or a diagnostics run. Main thread only; the ports must outlive it. Nothing
/// here fails: what cannot be read counts as no activity.
class ActivityMonitor {
 public:
  explicit ActivityMonitor(Ports& ports);

  /// Takes a sample and compares it with the sample of the tick before. Returns the applications
  /// that have stayed over a threshold for the sustain time, the busiest (CPU % + network KB/s)
  /// first. Returns nothing when there is nothing to compare with: on the first tick, after a
  /// reset, and when the tick before was 0.2 s ago or less, or 120 s or more.
  std::vector<BusyApp> tick(const ActivityThresholds& thresholds);

  /// From now on `listener`, which may be null, is told the inputs of each tick, as long as this
  /// monitor lives. A monitor that has one asks who holds assertions even where they do not count.
  void setListener(TickListener* listener) { listener_ = listener; }

  /// Forgets the sampling history, but not `assertingApps`.
  void reset();

  /// The result of the last tick that had something to compare with.
  [[nodiscard]] const std::vector<BusyApp>& lastBusy() const { return lastBusy_; }
  /// Every application that was over a threshold at that tick, sustained or not, the highest CPU %
  /// first.
  [[nodiscard]] const std::vector<BusyApp>& lastCandidates() const { return lastCandidates_; }
  /// The programs that hold a sleep assertion of their own, without the ignored ones.
  [[nodiscard]] const std::vector<std::string>& assertingApps() const { return assertingApps_; }
  /// The same programs with their own words.
  [[nodiscard]] const std::vector<AskingProgram>& askingPrograms() const { return asking_; }

 private:
  /// One application's processes taken together.
  struct Accumulator {
    std::string display;
    AppCategory category = AppCategory::other;
    std::optional<double> cpuFloor;
    // The sums over its processes. They wrap around.
    std::uint64_t cpuNanos = 0;
    std::uint64_t diskBytes = 0;
    std::uint64_t netBytes = 0;
  };
  using Applications = TextMap<Accumulator>;

  Applications aggregate(const std::vector<RawSample>& samples, const NetworkTotals& netTotals);
  Accumulator startAccumulator(const RawSample& sample);
  void judge(const Applications& current, Seconds interval, Moment now,
             const ActivityThresholds& thresholds);
  std::optional<BusyApp> overThreshold(const std::string& key, const Accumulator& application,
                                       Seconds interval, const ActivityThresholds& thresholds);
  void updateAssertingApps(const ActivityThresholds& thresholds);

  Text& text_;
  Clock& clock_;
  ProcessSampler processSampler_;
  NetworkSampler networkSampler_;
  Applications previous_;             ///< The applications at the tick before.
  std::optional<Moment> previousAt_;  ///< When the tick before was; absent when there was none.
  TextMap<Moment> busySince_;         ///< When each unbroken run over a threshold began.
  std::vector<BusyApp> lastBusy_;
  std::vector<BusyApp> lastCandidates_;
  std::vector<std::string> assertingApps_;
  std::vector<AskingProgram> asking_;
  TickListener* listener_ = nullptr;
  std::vector<std::string> everyAsserting_;  ///< With the ignored ones; kept for the listener only.
};

}  // namespace tidewell
