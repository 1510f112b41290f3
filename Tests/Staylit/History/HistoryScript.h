#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "Staylit/History/HistoryTimeline.h"

namespace staylit {

/// Writes a history by hand. Times are minutes after 22 November 2026, 00:00 UTC.
class HistoryScript {
 public:
  using Minutes = std::chrono::duration<double, std::ratio<60>>;

  static tidewell::WallTime at(double minutes) {
    return std::chrono::sys_days(std::chrono::year(2026) / 11 / 22) +
           std::chrono::round<std::chrono::nanoseconds>(Minutes(minutes));
  }

  /// Begins a run, whose events all others are until another begins.
  HistoryScript& start(double minutes, std::optional<tidewell::WallTime> lastSeen = std::nullopt) {
    ++run_;
    return add(minutes, HistoryEvent::Started{"0.1.0", lastSeen});
  }

  HistoryScript& add(double minutes, HistoryEvent::What what) {
    const auto sinceBoot =
        std::chrono::round<std::chrono::nanoseconds>(Minutes(minutes)) + std::chrono::hours(1'000);
    history.events.push_back(
        {at(minutes) + wallTimeError, tidewell::Moment(sinceBoot), run_, std::move(what)});
    return *this;
  }

  HistoryScript& hold(double minutes, const std::string& name,
                      std::vector<std::string> services = {"logind"}) {
    return add(
        minutes,
        HistoryEvent::StateChanged{
            StatusReport::State::holding, name + " is working", {name}, std::move(services)});
  }
  HistoryScript& wind(double minutes) {
    return add(minutes,
               HistoryEvent::StateChanged{
                   StatusReport::State::winding, "waiting for work to resume", {}, {"logind"}});
  }
  HistoryScript& state(double minutes, StatusReport::State state, std::string reason = "") {
    return add(minutes, HistoryEvent::StateChanged{state, std::move(reason), {}, {}});
  }
  HistoryScript& begin(double minutes, const std::string& name, WorkFigures figures = {100, 0, 0}) {
    return add(minutes,
               HistoryEvent::WorkBegan{name, name, tidewell::AppCategory::other, 10, figures});
  }
  HistoryScript& finish(double minutes, const std::string& name) {
    return add(minutes, HistoryEvent::WorkEnded{name, {150, 0, 0}, {120, 0, 0}});
  }
  HistoryScript& battery(double minutes, std::int64_t percent, bool onAC = false) {
    return add(minutes, HistoryEvent::PowerChanged{{onAC, percent, false, true}});
  }

  /// The clock on the wall is wrong by this for the events that follow.
  std::chrono::nanoseconds wallTimeError{};
  History history{{}, std::nullopt, false, at(1'440)};

 private:
  std::int64_t run_ = 0;
};

}  // namespace staylit
