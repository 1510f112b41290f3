#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Staylit/History/HistoryTimeline.h"

namespace staylit {

/// Makes spans of the events of one run of the program. Used by `timelineOf` only.
///
/// What people did to the wall clock during a run changes no length: the last event tells how wall
/// time and the clock of a `Moment` belong together, and places all events of the run. Each setting
/// of the wall clock is an event, within minutes of it.
class HistoryRun {
 public:
  /// `last` is the last event of the run, which is still to be added as all others are.
  explicit HistoryRun(const HistoryEvent& last);

  /// In the order in which the events were written.
  void add(const HistoryEvent& event);

  /// Whether the run ended in order.
  [[nodiscard]] bool hasEnded() const { return hasEnded_; }
  [[nodiscard]] tidewell::WallTime lastEventAt() const { return now_; }
  /// Ends a run that did not say that it ended.
  void end(tidewell::WallTime at, HistoryTimeline::Ending ending);

  /// After the end of the run.
  [[nodiscard]] HistoryTimeline timeline() && { return std::move(timeline_); }

 private:
  using Ending = HistoryTimeline::Ending;
  using OpenSpan = std::optional<tidewell::WallTime>;  ///< Since when.

  void take(const HistoryEvent::Started& started);
  void take(const HistoryEvent::Stopped& stopped);
  void take(const HistoryEvent::StateChanged& changed);
  void take(const HistoryEvent::WorkBegan& began);
  void take(const HistoryEvent::WorkEnded& ended);
  void take(const HistoryEvent::AskingChanged& changed);
  void take(const HistoryEvent::PowerChanged& changed);
  void take(const HistoryEvent::FellAsleep& asleep);
  void take(const HistoryEvent::WokeUp& woke);
  void take(const HistoryEvent::LidMoved& moved);
  void take(const HistoryEvent::LidHoldChanged& changed);
  void take(const HistoryEvent::SettingChanged& changed);
  void take(const HistoryEvent::ClockSet& set);

  bool endWork(const std::string& key);
  void endHold(Ending ending);
  void endBlock(Ending ending);
  void endWorks(Ending ending);
  void endAskings(Ending ending);
  void turn(OpenSpan& open, std::vector<HistoryTimeline::Span>& spans, bool isOn,
            Ending ending = Ending::ended);

  std::chrono::nanoseconds wallTimeAtMomentZero_;
  tidewell::WallTime now_{};  ///< When the event was that is being taken.
  OpenSpan began_;
  std::string version_;
  bool hasEnded_ = false;
  std::optional<HistoryTimeline::Hold> hold_;
  std::optional<HistoryTimeline::Block> block_;
  std::vector<HistoryTimeline::Work> works_;
  std::vector<HistoryTimeline::Asking> askings_;
  OpenSpan pause_;
  OpenSpan sleep_;
  OpenSpan battery_;
  OpenSpan lidClosed_;
  OpenSpan lidHold_;
  HistoryTimeline timeline_;  ///< What has ended.
};

}  // namespace staylit
