#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Staylit/StatusReport.h"
#include "Tidewell/AppCategory.h"
#include "Tidewell/BatteryMonitor.h"
#include "Tidewell/Ports/Clock.h"

namespace staylit {

/// What an application uses, as `tidewell::BusyApp` has it.
struct WorkFigures {
  double cpuPercent = 0;  ///< Of one core.
  double diskKBps = 0;
  double netKBps = 0;

  friend bool operator==(const WorkFigures&, const WorkFigures&) = default;
};

/// One thing that happened while the program ran, as the history keeps it. A value.
///
/// Countdowns, figures alone and the order of the same names are no event.
struct HistoryEvent {
  /// The program started. The first event of a run.
  struct Started {
    std::string version;
    /// Until when the run before was certainly alive, when that run did not end in order.
    std::optional<tidewell::WallTime> lastSeen;
    friend bool operator==(const Started&, const Started&) = default;
  };
  /// The program ended in order. The last event of a run.
  struct Stopped {
    friend bool operator==(const Stopped&, const Stopped&) = default;
  };
  /// What the engine decided, and who grants the hold: nobody where `services` is empty.
  struct StateChanged {
    StatusReport::State state = StatusReport::State::idle;
    std::string reason;              ///< Of the hold or the block.
    std::vector<std::string> names;  ///< What it is held for; empty unless holding.
    std::vector<std::string> services;
    friend bool operator==(const StateChanged&, const StateChanged&) = default;
  };
  /// An application began to count as working.
  struct WorkBegan {
    std::string key;  ///< `tidewell::BusyApp::id`.
    std::string display;
    tidewell::AppCategory category = tidewell::AppCategory::other;
    double overForSeconds = 0;  ///< How long it had been over a threshold already.
    WorkFigures figures;
    friend bool operator==(const WorkBegan&, const WorkBegan&) = default;
  };
  struct WorkEnded {
    std::string key;
    WorkFigures peak;  ///< Each figure's own highest value.
    WorkFigures mean;  ///< Over the ticks.
    friend bool operator==(const WorkEnded&, const WorkEnded&) = default;
  };
  /// Other programs that ask to stay awake from now on; none where it is empty.
  struct AskingChanged {
    std::vector<std::string> names;
    /// What each of them says about itself; of equal length, or empty when none says anything.
    std::vector<std::string> words = {};
    friend bool operator==(const AskingChanged&, const AskingChanged&) = default;
  };
  struct PowerChanged {
    tidewell::PowerState power{};
    friend bool operator==(const PowerChanged&, const PowerChanged&) = default;
  };
  struct FellAsleep {
    friend bool operator==(const FellAsleep&, const FellAsleep&) = default;
  };
  struct WokeUp {
    friend bool operator==(const WokeUp&, const WokeUp&) = default;
  };
  struct LidMoved {
    bool isClosed = false;
    friend bool operator==(const LidMoved&, const LidMoved&) = default;
  };
  /// The lock that keeps a closed lid from putting the machine to sleep.
  struct LidHoldChanged {
    bool isHeld = false;
    friend bool operator==(const LidHoldChanged&, const LidHoldChanged&) = default;
  };
  struct SettingChanged {
    std::string key;
    std::string from;  ///< For people to read; lists have a comma between their elements.
    std::string to;
    friend bool operator==(const SettingChanged&, const SettingChanged&) = default;
  };

  /// Somebody set the wall clock, by a second or more, at some time of the minutes before. The time
  /// of the event is by the new wall clock.
  struct ClockSet {
    friend bool operator==(const ClockSet&, const ClockSet&) = default;
  };

  using What = std::variant<Started, Stopped, StateChanged, WorkBegan, WorkEnded, AskingChanged,
                            PowerChanged, FellAsleep, WokeUp, LidMoved, LidHoldChanged,
                            SettingChanged, ClockSet>;

  tidewell::WallTime at{};    ///< Places the event in the day. People may have set this clock.
  tidewell::Moment moment{};  ///< Orders and measures the events of one run.
  /// The same for all events of a run, and another for each run: two programs may write at once.
  std::int64_t run = 0;
  What what;

  friend bool operator==(const HistoryEvent&, const HistoryEvent&) = default;
};

/// The event as a JSON object on one line, without a newline. Times have whole milliseconds,
/// figures one digit behind the point.
[[nodiscard]] std::string textOf(const HistoryEvent& event);

/// The event that `line` tells of. Absent when the line is torn or damaged, or of a kind that only
/// a later version knows; members that are not known do not matter. Texts are cleaned.
///
/// A kind never changes its meaning: a later version that means something else calls it by another
/// name. A member that is absent or of another type reads as nothing, except where the event would
/// say nothing without it.
[[nodiscard]] std::optional<HistoryEvent> historyEvent(std::string_view line);

}  // namespace staylit
