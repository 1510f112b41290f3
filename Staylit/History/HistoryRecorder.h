#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Staylit/EngineStatus.h"
#include "Staylit/History/HistoryEvent.h"
#include "Staylit/History/HistoryLog.h"
#include "Staylit/Published.h"
#include "Staylit/StaylitEngine.h"
#include "Tidewell/Ports/Ports.h"
#include "Tidewell/Ports/PropertyValue.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// Makes events of what the engine publishes, and of sleep, lid and settings, and gives them to a
/// log.
///
/// From tick to tick it only compares; on a tick that brings nothing new it allocates nothing. It
/// looks at the settings once a minute, and whether a history is wanted at all
/// (`keys::historyEnabled`). A switch of that setting ends or begins a run of the history. During a
/// pause there are no ticks; a timer of the main loop looks every ten minutes.
///
/// It leaves a trace in the log each minute while the engine holds, else each ten minutes.
///
/// Main thread only. Make it before the engine's first tick; the engine, the ports and the log must
/// outlive it, and the ports must be the installed ones.
class HistoryRecorder {
 public:
  /// A gap between two ticks that is as long as this, and most of which the machine slept, is a
  /// sleep that nobody announced. The monitor forgets its samples after the same time.
  static constexpr std::chrono::seconds kLongestWait{120};

  HistoryRecorder(StaylitEngine& engine, tidewell::Ports& ports, HistoryLog& log);

  /// The program ends in order; nothing is recorded after that. Without this call the run counts as
  /// lost.
  void stop();

 private:
  /// An application that works, and its figures so far.
  struct Work {
    std::string key;
    WorkFigures peak;
    WorkFigures sum;
    double ticks = 0;
    bool isSeen = false;  ///< At this tick.
  };
  using Setting = std::pair<std::string, tidewell::PropertyValue>;

  void start();
  void end();
  void look(const EngineStatus& next);
  bool isAwake();
  void lookForSleepThatNobodyAnnounced(tidewell::Moment now);
  void recordPower();
  void recordLid();
  void recordLidHold();
  void recordWork(const std::vector<tidewell::BusyApp>& busy);
  void recordAsking(const std::vector<std::string>& names);
  void recordState(const EngineStatus& next);
  void endAllWork();
  void lookAtSettings();
  void followPause(const EngineStatus& next);
  void everyMinute();
  void whilePaused();
  void lookAround();
  void lookAtWallTime();
  [[nodiscard]] std::chrono::nanoseconds wallOffset() const;
  void leaveTrace();
  void observeSystemSleep();
  void fallAsleep();
  void wakeUp();
  void add(HistoryEvent::What what);

  StaylitEngine& engine_;
  tidewell::Ports& ports_;
  HistoryLog& log_;
  std::int64_t run_ = 0;
  bool isRecording_ = false;
  bool isStopped_ = false;
  std::chrono::nanoseconds wallOffset_{};    ///< Of wall time to moments, a minute ago.
  int ticks_ = 0;                            ///< Of the minute.
  int minutes_ = 0;                          ///< Since the last trace.
  std::optional<tidewell::Moment> last_;     ///< When the last tick was.
  std::chrono::nanoseconds asleepBefore_{};  ///< At a tick of the last minute.
  std::chrono::nanoseconds before_{};        ///< How long ago that happened which is being told.
  std::optional<int> ticksAsleep_;           ///< Absent while awake.
  std::optional<EngineStatus> told_;         ///< What was told last, as are those that follow.
  bool toldGranted_ = false;
  std::optional<tidewell::PowerState> toldPower_;
  HistoryEvent::AskingChanged toldAsking_;
  std::optional<bool> toldLid_;
  bool toldLidHold_ = false;
  std::vector<Work> works_;
  std::vector<Setting> settings_;
  std::unique_ptr<tidewell::RepeatingTimer> pauseTimer_;  ///< While the engine is paused.
  Subscription subscription_;
  tidewell::WeakReferenceSource<HistoryRecorder> self_{*this};  ///< For the observers.
};

}  // namespace staylit
