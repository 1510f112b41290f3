#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/History/HistoryEvent.h"
#include "Staylit/StatusReport.h"
#include "Tidewell/AppCategory.h"
#include "Tidewell/BatteryMonitor.h"
#include "Tidewell/Ports/Clock.h"

namespace staylit {

/// All that was kept, as it was read back.
struct History {
  std::vector<HistoryEvent> events;  ///< In the order in which they were written.
  /// When the program that wrote last was certainly alive, beside its last event.
  std::optional<tidewell::WallTime> lastSeen;
  bool isRunning = false;    ///< Whether a program is there that writes it now.
  tidewell::WallTime now{};  ///< When it was read.
};

/// What went on between two points in time, derived from the events. A value.
///
/// All times are wall time by the clock that was on the wall at the last event of each run of the
/// program, so what ended with an event is as long as it was measured, however often somebody set
/// the clock. A span that is open or lost ends by the wall clock: its length is wrong when somebody
/// set the clock after the last event, until the program notices that within a minute (during a
/// pause, within about ten). Spans of one kind
/// stand in the order in which they began. Spans of two programs that ran at once may overlap.
struct HistoryTimeline {
  enum class Ending {
    ended,  ///< In order.
    open,   ///< It goes on now.
    lost,   ///< The program ended without a word. `to` is when it was certainly alive.
    later   ///< It went on beyond the end of the timeline.
  };

  struct Span {
    tidewell::WallTime from{};
    tidewell::WallTime to{};
    bool beganEarlier = false;  ///< Before the timeline, whose beginning is `from` then.
    Ending ending = Ending::ended;

    [[nodiscard]] std::chrono::nanoseconds length() const { return to - from; }
    friend bool operator==(const Span&, const Span&) = default;
  };

  /// One run of the program.
  struct Run {
    Span span;
    std::string version;
  };

  /// The time from taking a hold to its release, with each change of its reason in between.
  struct Hold {
    struct Part {
      tidewell::WallTime from{};
      tidewell::WallTime to{};
      StatusReport::State state = StatusReport::State::holding;  ///< Or `winding`.
      std::string reason;
      std::vector<std::string> names;
      std::vector<std::string> services;

      /// Whether the machine was kept awake, as far as the services told.
      [[nodiscard]] bool isGranted() const { return !services.empty(); }
    };
    Span span;
    std::vector<Part> parts;  ///< At least one; each begins where the one before ends.
  };

  struct Block {
    Span span;
    std::string reason;
  };

  /// An application that counted as working.
  struct Work {
    Span span;
    std::string key;
    std::string display;
    tidewell::AppCategory category = tidewell::AppCategory::other;
    double overForSeconds = 0;  ///< How long it had been over a threshold before `span`.
    WorkFigures start;
    std::optional<WorkFigures> peak;  ///< Of the whole work; absent until it has ended in order.
    std::optional<WorkFigures> mean;
    std::chrono::nanoseconds onBattery{};  ///< How much of `span`.
  };

  /// Another program that asked to stay awake, with the same words all the time.
  struct Asking {
    Span span;
    std::string name;
    std::string words = {};  ///< What it said about itself; empty when it said nothing.
    [[nodiscard]] std::string wordsInBrackets() const {
      return words.empty() ? "" : " (" + words + ")";
    }
  };

  struct Charge {
    tidewell::WallTime at{};
    tidewell::PowerState power{};
  };

  struct Setting {
    tidewell::WallTime at{};
    std::string key;
    std::string from;
    std::string to;
  };

  /// Somebody set the wall clock.
  struct ClockSet {
    tidewell::WallTime at{};  ///< By the new wall clock, when that was noticed.
  };

  tidewell::WallTime from{};
  tidewell::WallTime to{};
  std::vector<Run> runs;
  std::vector<Hold> holds;
  std::vector<Block> blocks;
  std::vector<Span> pauses;
  std::vector<Span> sleeps;
  std::vector<Work> works;
  std::vector<Asking> askings;
  /// One for each run at the beginning of the timeline, then one for each change.
  std::vector<Charge> charges;
  std::vector<Span> onBattery;
  std::vector<Span> lidClosed;
  std::vector<Span> lidHolds;
  std::vector<Setting> settings;
  std::vector<ClockSet> clockSets;
};

/// What `history` has between `from` and `to`. A span that began before or goes on after is cut.
[[nodiscard]] HistoryTimeline timelineOf(const History& history, tidewell::WallTime from,
                                         tidewell::WallTime to);

}  // namespace staylit
